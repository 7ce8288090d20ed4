// The choice of variables: moves between the lists, and the limit.
#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/views/var_selection_dlg.h"

namespace vastra {
namespace {

TEST(VarChoice, TheLeftListKeepsItsOrderAndTheRightListThatOfChoosing) {
  CVarChoice choice(Names({"a", "b", "c", "d", "b"}), Names({"d", "x"}));
  const auto lists = [&] { return Joined(choice.Unused()) + "|" + Joined(choice.Chosen()); };
  const struct {
    std::vector<int> choose;
    int takeOut;
    const char* lists;
  } kSteps[] = {
      {{}, -1, "a,b,c,b,|d,x,"},     {{2, 0}, -1, "b,b,|d,x,a,c,"},
      {{1}, -1, "b,|d,x,a,c,b,"},  // one of two equal names
      {{0, 9}, -1, "|d,x,a,c,b,b,"}, {{}, 4, "b,|d,x,a,c,b,"},
      {{}, 1, "b,|d,a,c,b,"},  // not available
      {{}, 1, "a,b,|d,c,b,"},
  };
  for (const auto& step : kSteps) {
    choice.Choose(step.choose);
    choice.TakeOut(step.takeOut);
    EXPECT_EQ(lists(), step.lists);
  }
  choice.ChooseAll();
  EXPECT_EQ(lists(), "|d,c,b,a,b,");
  choice.TakeOutAll();
  EXPECT_EQ(lists(), "a,b,c,d,b,|");
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
    return Joined(dialog.List(kLeft).GetTexts()) + "|" + Joined(dialog.List(kRight).GetTexts());
  };
  const auto mover = [&](QWidget* window) {
    auto* left = Find<QListWidget>(window, kLeft);
    auto* right = Find<QListWidget>(window, kRight);
    for (const int row : {0, 2}) left->item(row)->setSelected(true);
    for (int twice = 0; twice < 2; ++twice) Click(window, "--->");
    EXPECT_EQ(lists(), "b,e,f,|d,a,c,");
    DoubleClick(left, 2);
    EXPECT_EQ(lists(), "b,e,|d,a,c,f,");
    QTest::keyClick(left, Qt::Key_Down);
    EXPECT_TRUE(left->item(0)->isSelected()) << "after a move no entry is the current one";
    Click(window, "OK");
    EXPECT_EQ(prompter.Take(), std::vector<std::string>{"Message|Maximum number of variables is 2|00"});
    ASSERT_TRUE(window->isVisible());
    right->setCurrentRow(1);
    for (int twice = 0; twice < 2; ++twice) Click(window, "<---");
    EXPECT_EQ(lists(), "a,b,e,|d,c,f,");
    DoubleClick(right, 0);
    EXPECT_EQ(lists(), "a,b,d,e,|c,f,");
    EXPECT_EQ(Joined(selected), "d,");
    Click(window, "OK");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDOK); }, mover);
  EXPECT_EQ(Joined(selected), "c,f,");
  const auto canceller = [&](QWidget* window) {
    Click(window, "<<");
    EXPECT_EQ(lists(), "a,b,c,d,e,f,|");
    Click(window, ">>");
    EXPECT_EQ(lists(), "|a,b,c,d,e,f,");
    Click(window, "Cancel");
  };
  WhileModal([&] { EXPECT_EQ(dialog.DoModal(), IDCANCEL); }, canceller);
  EXPECT_EQ(Joined(selected), "c,f,");
}

}  // namespace
}  // namespace vastra
