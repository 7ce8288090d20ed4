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
  const CSteps insert = {"Variables  / Insert  New Variable / New Variable=new / OK"};
  const auto state = [](const char* extra, const char* equations, const char* flag, const char* text) {
    return std::string(extra) + "equations:" + equations + "|baseVars:a,b,|" + flag + "equationText:" + text +
           "|";
  };
  const std::string kBefore = state("extraVars:old,|", "old = a,", "calculateExtra:7|", "old = a");
  const struct {
    CSteps steps;
    std::string ok, cancelled;
  } kCases[] = {
      {{}, kBefore, kBefore},
      {{"Variables  / Variable List#2 / Delete Variable / OK"},
       state("", "old = a,", "", "old = a"),
       state("extraVars:old,|", "old = a,", "", "old = a")},
      {insert + CSteps{"OK"}, state("extraVars:old,new,|", "old = a,", "calculateExtra:1|", "old = a"),
       state("extraVars:old,|", "old = a,", "calculateExtra:1|", "old = a")},
      {insert + CSteps{"Cancel"}, kBefore, kBefore},
      {{"Equations / Equations?old = a / Equations=n = b; m = n; / OK"},
       state("extraVars:old,|", "n = b, m = n,", "calculateExtra:7|", "n = b; m = n;"),
       kBefore},
      {{"Equations / Equations=n = b; / Cancel"}, kBefore, kBefore},
  };
  for (const auto& c : kCases) {
    for (const bool accepts : {true, false}) {
      m_options.m_baseVars = Names({"a", "b"});
      m_options.m_extraVars = Names({"old"});
      m_options.m_equationText = "old = a";
      m_options.m_equations = Names({"old = a"});
      m_options.m_calculateExtra = 7;
      EXPECT_EQ(Run(c.steps + (accepts ? CSteps{"OK"} : CSteps{})), accepts ? IDOK : IDCANCEL);
      EXPECT_EQ(TextOf(m_options), accepts ? c.ok : c.cancelled);
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
  Run({openAnother, "!Message|Already open|30 / Variables  / !Message|No variables available|30"});
  {
    CTrendFacadeDlg left;
    left.SetInputPointers(nullptr, &m_stage);
    EXPECT_EQ(left.Create(), 1);
  }
  Run({[](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); }});
}

}  // namespace
}  // namespace vastra
