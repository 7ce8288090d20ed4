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
  CTrendConfig& m_options = *m_stage.GetOptions();
  CSheetUser m_user;
};

TEST_F(TrendFacade, OkWritesTheSettingsAndOnlyTheFlagSurvivesCancel) {
  const std::string kInsert = "Variables  / Insert  New Variable / New Variable=new / OK / ";
  const struct {
    std::string steps, flag, extra, equations, text;  // after OK
  } kCases[] = {
      {kInsert + "Cancel / Equations / Equations=n = b; / Cancel", "calculateExtra:7|", "extraVars:old,|",
       "old = a,", "old = a"},
      {"Variables  / Variable List#2 / Delete Variable / OK", "", "", "old = a,", "old = a"},
      {kInsert + "OK / Equations / Equations?old = a / Equations=n = b; m = n; / OK", "calculateExtra:1|",
       "extraVars:old,new,|", "n = b, m = n,", "n = b; m = n;"},
  };
  for (const auto& c : kCases) {
    for (const bool accepts : {true, false}) {
      m_options.m_baseVars = Names({"a", "b"});
      m_options.m_extraVars = Names({"old"});
      m_options.m_equationText = "old = a";
      m_options.m_equations = Names({"old = a"});
      m_options.m_calculateExtra = 7;
      EXPECT_EQ(Run(accepts ? CSteps{c.steps, "OK"} : CSteps{c.steps}), accepts ? IDOK : IDCANCEL);
      EXPECT_EQ(TextOf(m_options), accepts ? c.extra + "equations:" + c.equations + "|baseVars:a,b,|" +
                                                 c.flag + "equationText:" + c.text + "|"
                                           : "extraVars:old,|equations:old = a,|baseVars:a,b,|" + c.flag +
                                                 "equationText:old = a|");
    }
  }
}

TEST_F(TrendFacade, OnlyOneIsOpen) {
  const auto openAnother = [&](QWidget*) {
    CTrendFacadeDlg second;
    second.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(second.DoModal(), 0);
    EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 1u);
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
