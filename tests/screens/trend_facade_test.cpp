// The dialog of the extra variables that the live views share.
#include "vastra/screens/trend_facade_dlg.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class TrendFacade : public testing::Test {
 protected:
  int Run(const CSteps& steps) {
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &m_stage);
    const int result = m_user.Run(dialog, steps);
    EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 0u);
    return result;
  }
  CLogTrendings m_stage;
  CSheetUser m_user;
};

TEST_F(TrendFacade, OkWritesTheSettingsAndOnlyTheFlagSurvivesCancel) {
  auto settings =
      R"({"baseVars": ["a", "b"], "extraVars": ["old"], "equationText": "old = a", "calculateExtra": 7})"_json;
  *m_stage.GetOptions() = Configured<CTrendConfig>(settings);
  const auto edit = [&](const std::string& steps, const json& changes) {
    const int result = Run({steps});
    settings.update(changes);
    EXPECT_EQ(FieldsOf(*m_stage.GetOptions()), FieldsOf(Configured<CTrendConfig>(settings))) << steps;
    return result;
  };
  const std::string kInsert = "Variables  / Insert  New Variable / New Variable=new / OK / ",
                    kEdit = kInsert + "OK / Equations / Equations?old = a / Equations=n = b; m = n; / OK / ";
  EXPECT_EQ(edit(kInsert + "Cancel / Equations / Equations=n = b; / Cancel / OK", json::object()), IDOK);
  EXPECT_EQ(edit(kEdit + "Cancel", {{"calculateExtra", 1}}), IDCANCEL);
  EXPECT_EQ(edit(kEdit + "OK", {{"extraVars", {"old", "new"}}, {"equationText", "n = b; m = n;"}}), IDOK);
  const std::string kDelete = "Variable List#2 / Delete Variable / ";
  edit("Variables  / " + kDelete + kDelete + "OK / OK",
       {{"extraVars", json::array()}, {"calculateExtra", 0}});
}

TEST_F(TrendFacade, OnlyOneIsOpen) {
  m_user.boxes.user = [] { EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 1u) << "the refused dialog is counted"; };
  const auto openAnother = [&](QWidget*) {
    CTrendFacadeDlg second;
    second.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(second.DoModal(), 0);
  };
  EXPECT_EQ(
      Run({openAnother, "!Message|Already open|30 / Variables  / !Message|No variables available|30 / OK"}),
      IDOK);
  {
    CTrendFacadeDlg left;
    left.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(left.Create(), 1);
  }
  Run({[](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }});
}

}  // namespace
}  // namespace vastra
