// The page of the configuration sheet for the source of the samples.
#include "vastra/screens/input_page.h"

#include <gtest/gtest.h>

#include "tests/screens/sheet_user.h"
#include "tests/support/recorder.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

class InputPage : public testing::Test {
 protected:
  CRecorder m_recorder;  // of the messages of links
  CSheetUser m_user;
  CInputPage m_page;
  const json m_config = R"({"scanPeriod": 700, "inputFiles": ["/old"], "preNewVars": ["b"],
    "preEquationText": "x = b;", "plcNodes": [{"nodeName": "node", "driver": {"plcType": 777, "value5": 15},
                                               "varNames": ["v", "w"]}]})"_json;
};

TEST_F(InputPage, ControlsDependOnTheChoices) {
  m_page.SetConfiguration(Configured<CInputConfig>(
      R"({"scanPeriod": 77, "simulating": 1, "preprocess": 1, "asFastAsPossible": 1, "autoStart": 1})"_json));
  const std::string kNodes = "Net nodes? / Add net node...? / Edit net node...? / Delete Node?",
                    kNoNodes = "Net nodes?- / Add net node...?- / Edit net node...?- / Delete Node?-";
  m_user.Run(
      m_page,
      {"Simulating?x / Preprocess input?x / As fast as possible?x / Auto Start?x / Scan period :?-77",
       "Select Files...? / Variable List...? / Preprocessed equations...?", kNoNodes,
       "Connected / Select Files...?-", kNodes, "Scan period : / Scan period :?5000 / Scan period :=1234",
       "Preprocess input / Scan period :?1234 / Variable List...?- / Preprocessed equations...?-",
       "As fast as possible / Scan period :?-10 / Simulating / Select Files...?", kNoNodes});
}

TEST_F(InputPage, EditsGoToTheConfiguration) {
  const auto edit = [&](const char* steps, const json& changes) {
    const auto config = Configured<CInputConfig>(m_config);
    json wanted = m_config;
    wanted.update(changes);
    m_page.SetConfiguration(config);
    EXPECT_EQ(m_user.Run(m_page, {steps}), IDOK);
    EXPECT_EQ(Held(m_page, config), FieldsOf(Configured<CInputConfig>(wanted)));
  };
  edit(
      "Preprocess input / Variable List... / ->> / Cancel / Preprocessed equations... / Equations=z = 1; / "
      "Cancel / Simulating / Select Files... / Connected / OK",
      {{"preprocess", 1}});
  m_user.chooser.paths = Names({"/z.rph", "/a.rph"});
  edit(
      "Preprocess input / Variable List... / Available Vars?v,w, / Selected Vars?b, / ->> / OK / "
      "Preprocessed equations... / Equations?x = b; / Equations=y = b; z = y / OK / Scan period :=65000 / "
      "Auto Start / Simulating / Select Files... / OK",
      R"({"preprocess": 1, "preNewVars": ["b", "v", "w"], "preEquationText": "y = b; z = y", "scanPeriod": 65000,
          "autoStart": 1, "simulating": 1, "inputFiles": ["/z.rph", "/a.rph"]})"_json);
  EXPECT_EQ(m_user.chooser.file.filter, "Heat Files (*.rph)|*.rph||");
  edit("As fast as possible / Scan period : / OK", {{"scanPeriod", 5000}});
  // Without a node the names are not known: no list opens.
  edit(
      "As fast as possible / Net nodes#0 / Delete Node / Preprocess input / Variable List... / Preprocess "
      "input / Simulating / OK",
      {{"scanPeriod", 10}, {"asFastAsPossible", 1}, {"simulating", 1}, {"plcNodes", json::array()}});
}

TEST_F(InputPage, RefusesSettingsThatCannotWork) {
  const std::string kRefused = " / OK / !Please enter a whole number from 10 to 65000.";
  const CSteps steps = {"Scan period :=9" + kRefused, "Scan period :=65001" + kRefused,
                        "Scan period :=" + kRefused, "Scan period :=10 / OK",
                        "!Wrong Configuration!!\n If the logger is going to be connected to a PLC net, you "
                        "must select one net node at least"};
  EXPECT_EQ(m_user.Run(m_page, steps), IDCANCEL);
}

TEST_F(InputPage, ApplyAsksBeforeItErasesEquations) {
  const std::string kErased = " equations are not valid and will be erased.\n Continue anyway?|34",
                    kPre = "|Preprocess" + kErased, kTrend = "|Trendings/Grid" + kErased,
                    kOpen =
                        "|Changes can't be made until the Trendings/Grid configuration dialog is closed!|30";
  const struct {
    bool hasTrend, isTrendOpen;
    const char *pre, *trend;  // a may be read
    CTexts asked;
    std::string answers;  // yes or no
    bool isApplied;
    const char* left;  // of pre and of trend
  } kCases[] = {
      {true, false, "y = x; x = a", "t = t + a", {}, "yy", true, "y = x; x = a|t = t + a"},
      {true, false, "x = b", "t = a", {kPre}, "yy", true, "|t = a"},
      {true, false, "x = a", "t = x", {kTrend}, "ny", false, "x = a|t = x"},
      {true, false, "x = b", "t = b", {kPre}, "ny", false, "x = b|t = b"},
      {true, false, "x = b", "t = b", {kPre, kTrend}, "yn", false, "x = b|t = b"},
      {true, false, "x = b", "t = b", {kPre, kTrend}, "yy", true, "|"},
      {false, false, "x = b", "t = b", {kPre}, "yy", true, "|t = b"},
      {true, true, "x = b", "t = b", {kOpen}, "yy", false, "x = b|t = b"},
      {false, true, "x = a", "", {}, "yy", true, "x = a|"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.pre) + "|" + c.trend);
    json config = m_config;
    config.update({{"preNewVars", {"a"}}, {"preEquationText", c.pre}});
    m_page.SetConfiguration(Configured<CInputConfig>(config));
    CLogTrendings trendings;
    CTrendConfig& trend = *trendings.GetOptions();
    trend = Configured<CTrendConfig>({{"equationText", c.trend}});
    m_page.m_pTrendOptions = c.hasTrend ? &trend : nullptr;
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &trendings);
    if (c.isTrendOpen) dialog.Create();
    m_user.boxes.user = [&] {
      m_user.boxes.answer = c.answers.at(m_user.boxes.asked.size()) == 'n' ? IDNO : IDYES;
    };
    EXPECT_EQ(m_user.Run(m_page, {"OK"}), c.isApplied ? IDOK : IDCANCEL);
    EXPECT_EQ(m_user.boxes.Take(), c.asked);
    CInputConfig left;
    m_page.GetConfiguration(left);
    EXPECT_EQ(left.m_preEquationText.Std() + "|" + trend.m_equationText.Std(), c.left);
    EXPECT_EQ(left.m_preEquations.IsEmpty(), left.m_preEquationText.IsEmpty());
    EXPECT_EQ(trend.m_equations.IsEmpty(), trend.m_equationText.IsEmpty());
  }
}

}  // namespace
}  // namespace vastra
