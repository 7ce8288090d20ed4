// Choosing variables: what goes from list to list, and the limit.
#include <gtest/gtest.h>

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
    const char* what;
    std::function<void()> act;
    const char *unused, *chosen;
  } kSteps[] = {
      {"opening", [] {}, "abcb", "dx"},
      {"two marked",
       [&] {
         choice.Choose({2, 0});
       },
       "bb", "dxac"},
      {"one of two equal names", [&] { choice.Choose({1}); }, "b", "dxacb"},
      {"the other", [&] { choice.Choose({0}); }, "", "dxacbb"},
      {"one of them back", [&] { choice.TakeOut(4); }, "b", "dxacb"},
      {"the other back", [&] { choice.TakeOut(4); }, "bb", "dxac"},
      {"a name that is not available", [&] { choice.TakeOut(1); }, "bb", "dac"},
      {"back in its place", [&] { choice.TakeOut(1); }, "abb", "dc"},
      {"nothing marked", [&] { choice.TakeOut(-1), choice.Choose({}), choice.Choose({9}); }, "abb", "dc"},
      {"all", [&] { choice.ChooseAll(); }, "", "dcabb"},
      {"none", [&] { choice.TakeOutAll(); }, "abcdb", ""},
  };
  for (const auto& step : kSteps) {
    step.act();
    EXPECT_EQ(step.unused, Join(choice.Unused())) << step.what;
    EXPECT_EQ(step.chosen, Join(choice.Chosen())) << step.what;
  }
}

class VarSelection : public testing::Test {
 protected:
  // Runs the dialog with the names a to e, of which max may be chosen; gives the result.
  int Run(UINT max, const std::function<void(QWidget*)>& user) {
    CStringArray available = Names({"a", "b", "c", "d", "e"});
    CVarSelectionDlg dialog;
    dialog.m_pAvailable = &available;
    dialog.m_pSelected = &m_selected;
    dialog.m_max = max;
    int result = 0;
    WhileModal([&] { result = dialog.DoModal(); }, user);
    return result;
  }
  static void DoubleClick(QListWidget* list, int row) {
    const QPoint place = list->visualItemRect(list->item(row)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
  }

  CTestPrompter m_prompter;
  CStringArray m_selected = Names({"d"});
};

TEST_F(VarSelection, ButtonsAndDoubleClicksMoveWhatIsMarkedAndLeaveNothingMarked) {
  EXPECT_EQ(IDOK, Run(9, [](QWidget* dialog) {
              auto* left = Find<QListWidget>(dialog, "Available variables");
              auto* right = Find<QListWidget>(dialog, "Selected variables");
              EXPECT_EQ(std::vector<std::string>({"a", "b", "c", "e"}), Shown(left));
              for (const int row : {0, 2}) left->item(row)->setSelected(true);
              for (int twice = 0; twice < 2; ++twice) Click(dialog, "--->");
              EXPECT_EQ(std::vector<std::string>({"b", "e"}), Shown(left));
              DoubleClick(left, 1);
              EXPECT_EQ(std::vector<std::string>({"d", "a", "c", "e"}), Shown(right));
              right->setCurrentRow(1);
              for (int twice = 0; twice < 2; ++twice) Click(dialog, "<---");
              EXPECT_EQ(std::vector<std::string>({"a", "b"}), Shown(left));
              DoubleClick(right, 0);
              EXPECT_EQ(std::vector<std::string>({"a", "b", "d"}), Shown(left));
              Click(dialog, "OK");
            }));
  EXPECT_EQ("ce", Join(m_selected));
  EXPECT_EQ(IDCANCEL, Run(9, [](QWidget* dialog) { Click(dialog, "<<"), Click(dialog, "Cancel"); }));
  EXPECT_EQ("ce", Join(m_selected));
}

TEST_F(VarSelection, TheLimitIsCheckedAtOkAlone) {
  EXPECT_EQ(IDOK, Run(2, [this](QWidget* dialog) {
              Click(dialog, ">>");
              EXPECT_EQ(0U, m_prompter.asked.size());
              Click(dialog, "OK");
              EXPECT_EQ(std::vector<std::string>({"Message|Maximum number of variables is 2|00"}),
                        m_prompter.Take());
              ASSERT_TRUE(dialog->isVisible());
              EXPECT_EQ("d", Join(m_selected));
              auto* right = Find<QListWidget>(dialog, "Selected variables");
              for (int i = 0; i < 3; ++i) {
                right->setCurrentRow(0);
                Click(dialog, "<---");
              }
              Click(dialog, "OK");
            }));
  EXPECT_EQ("ce", Join(m_selected));
}

}  // namespace
}  // namespace vastra
