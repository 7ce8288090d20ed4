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
  const std::string kInsert = "Variables  / Insert  New Variable / New Variable=new / OK / ";
  const auto kBefore = nlohmann::json::parse(
      R"({"baseVars": ["a", "b"], "extraVars": ["old"], "equationText": "old = a", "calculateExtra": 7})");
  const struct {
    std::string steps;
    int flag;
    const char* after;  // OK, of the other settings
  } kCases[] = {
      {kInsert + "Cancel / Equations / Equations=n = b; / Cancel", 7, "{}"},
      {"Variables  / Variable List#2 / Delete Variable / OK", 0, R"({"extraVars": []})"},
      {kInsert + "OK / Equations / Equations?old = a / Equations=n = b; m = n; / OK", 1,
       R"({"extraVars": ["old", "new"], "equationText": "n = b; m = n;"})"},
  };
  for (const auto& c : kCases) {
    for (const bool accepts : {true, false}) {
      *m_stage.GetOptions() = Configured<CTrendConfig>(kBefore);
      EXPECT_EQ(Run(accepts ? CSteps{c.steps, "OK"} : CSteps{c.steps}), accepts ? IDOK : IDCANCEL);
      nlohmann::json after = kBefore;
      after["calculateExtra"] = c.flag;
      if (accepts) after.update(nlohmann::json::parse(c.after));
      EXPECT_EQ(FieldsOf(*m_stage.GetOptions()), FieldsOf(Configured<CTrendConfig>(after))) << c.steps;
    }
  }
}

TEST_F(TrendFacade, OnlyOneIsOpen) {
  m_user.boxes.user = [] { EXPECT_EQ(CTrendFacadeDlg::m_suOpen, 1u); };
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
