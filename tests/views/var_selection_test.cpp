// The choice of variables: moves between the lists, and the limit.
#include <gtest/gtest.h>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/views/var_selection_dlg.h"

namespace vastra {
namespace {

using CNames = std::vector<std::string>;

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
    EXPECT_EQ(Join(choice.Unused()), step.unused) << step.what;
    EXPECT_EQ(Join(choice.Chosen()), step.chosen) << step.what;
  }
}

class VarSelection : public testing::Test {
 protected:
  // Runs the dialog on the names a to e, of which max may be chosen; returns the result.
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

TEST_F(VarSelection, ButtonsAndDoubleClicksMoveMarkedNamesAndClearTheMarks) {
  const auto user = [](QWidget* dialog) {
    auto* left = Find<QListWidget>(dialog, "Available variables");
    auto* right = Find<QListWidget>(dialog, "Selected variables");
    EXPECT_EQ(Shown(left), CNames({"a", "b", "c", "e"}));
    for (const int row : {0, 2}) left->item(row)->setSelected(true);
    for (int twice = 0; twice < 2; ++twice) Click(dialog, "--->");
    EXPECT_EQ(Shown(left), CNames({"b", "e"}));
    DoubleClick(left, 1);
    EXPECT_EQ(Shown(right), CNames({"d", "a", "c", "e"}));
    right->setCurrentRow(1);
    for (int twice = 0; twice < 2; ++twice) Click(dialog, "<---");
    EXPECT_EQ(Shown(left), CNames({"a", "b"}));
    DoubleClick(right, 0);
    EXPECT_EQ(Shown(left), CNames({"a", "b", "d"}));
    Click(dialog, "OK");
  };
  EXPECT_EQ(Run(9, user), IDOK);
  EXPECT_EQ(Join(m_selected), "ce");
  EXPECT_EQ(Run(9, [](QWidget* dialog) { Click(dialog, "<<"), Click(dialog, "Cancel"); }), IDCANCEL);
  EXPECT_EQ(Join(m_selected), "ce");
}

TEST_F(VarSelection, OkAloneChecksTheLimit) {
  const auto user = [this](QWidget* dialog) {
    Click(dialog, ">>");
    EXPECT_TRUE(m_prompter.asked.empty());
    Click(dialog, "OK");
    EXPECT_EQ(m_prompter.Take(), CNames({"Message|Maximum number of variables is 4|00"}));
    ASSERT_TRUE(dialog->isVisible());
    EXPECT_EQ(Join(m_selected), "d");
    Find<QListWidget>(dialog, "Selected variables")->setCurrentRow(0);
    Click(dialog, "<---");
    Click(dialog, "OK");
  };
  EXPECT_EQ(Run(4, user), IDOK);
  EXPECT_EQ(Join(m_selected), "abce");
}

}  // namespace
}  // namespace vastra
