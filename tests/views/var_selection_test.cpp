// The choice of variables: moves between the lists, and the limit.
#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/views/var_selection_dlg.h"

namespace vastra {
namespace {

std::string Join(const CStringArray& names) {
  std::string all;
  for (const CString& name : names) all += name.Std();
  return all;
}

TEST(VarChoice, TheLeftListKeepsItsOrderAndTheRightListThatOfChoosing) {
  CVarChoice choice(Names({"a", "b", "c", "d", "b"}), Names({"d", "x"}));
  const struct {
    std::vector<int> choose;
    int takeOut;
    const char *unused, *chosen;
  } kSteps[] = {
      {{}, -1, "abcb", "dx"},     {{2, 0}, -1, "bb", "dxac"},
      {{1}, -1, "b", "dxacb"},  // one of two equal names
      {{0, 9}, -1, "", "dxacbb"}, {{}, 4, "b", "dxacb"},
      {{}, 4, "bb", "dxac"},      {{}, 1, "bb", "dac"},  // not available
      {{}, 1, "abb", "dc"},
  };
  for (const auto& step : kSteps) {
    choice.Choose(step.choose);
    choice.TakeOut(step.takeOut);
    EXPECT_EQ(Join(choice.Unused()), step.unused);
    EXPECT_EQ(Join(choice.Chosen()), step.chosen);
  }
  choice.ChooseAll();
  EXPECT_EQ(Join(choice.Unused()) + "|" + Join(choice.Chosen()), "|dcabb");
  choice.TakeOutAll();
  EXPECT_EQ(Join(choice.Unused()) + "|" + Join(choice.Chosen()), "abcdb|");
}

constexpr const char *kLeft = "Available variables", *kRight = "Selected variables";

void DoubleClick(QListWidget* list, int row) {
  const QPoint place = list->visualItemRect(list->item(row)).center();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
}

TEST(VarSelection, ButtonsAndDoubleClicksMoveMarkedNamesAndOkAloneChecksTheLimit) {
  CTestPrompter prompter;
  CStringArray available = Names({"a", "b", "c", "d", "e", "f"}), selected = Names({"d"});
  CVarSelectionDlg dialog;
  dialog.m_pAvailable = &available;
  dialog.m_pSelected = &selected;
  dialog.m_max = 2;
  const auto lists = [&] {
    return Join(dialog.List(kLeft).GetTexts()) + "|" + Join(dialog.List(kRight).GetTexts());
  };
  const auto mover = [&](QWidget* window) {
    auto* left = Find<QListWidget>(window, kLeft);
    auto* right = Find<QListWidget>(window, kRight);
    for (const int row : {0, 2}) left->item(row)->setSelected(true);
    for (int twice = 0; twice < 2; ++twice) Click(window, "--->");
    EXPECT_EQ(lists(), "bef|dac");
    DoubleClick(left, 2);
    EXPECT_EQ(lists(), "be|dacf");
    QTest::keyClick(left, Qt::Key_Down);
    EXPECT_TRUE(left->item(0)->isSelected()) << "after a move no entry is the current one";
    Click(window, "OK");
    EXPECT_EQ(prompter.Take(), std::vector<std::string>{"Message|Maximum number of variables is 2|00"});
    ASSERT_TRUE(window->isVisible());
    right->setCurrentRow(1);
    for (int twice = 0; twice < 2; ++twice) Click(window, "<---");
    EXPECT_EQ(lists(), "abe|dcf");
    DoubleClick(right, 0);
    EXPECT_EQ(lists(), "abde|cf");
    EXPECT_EQ(Join(selected), "d");
    Click(window, "OK");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDOK); }, mover);
  EXPECT_EQ(Join(selected), "cf");
  const auto canceller = [&](QWidget* window) {
    Click(window, "<<");
    EXPECT_EQ(lists(), "abcdef|");
    Click(window, ">>");
    EXPECT_EQ(lists(), "|abcdef");
    Click(window, "Cancel");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDCANCEL); }, canceller);
  EXPECT_EQ(Join(selected), "cf");
}

}  // namespace
}  // namespace vastra
