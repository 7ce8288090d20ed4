// The page of the configuration sheet for the source of the samples.
#include "vastra/screens/input_page.h"

#include <gtest/gtest.h>

#include <QTabWidget>

#include "tests/screens/node_pages.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

CInputConfig Config() {
  CInputConfig config;
  config.m_scanPeriod = 700;
  config.m_inputFiles.AddTail("old");
  config.m_preNewVars = Names({"b"});
  config.m_preEquations = Names({"x = b"});
  config.m_preEquationText = "x = b;";
  auto* node = new CPlcNodeConfig;
  node->m_nodeName = "node";
  node->m_driver.plcType = SCRIPTED_ID;
  node->m_driver.value5 = 15;
  node->m_driver.variableCount = 2;
  node->m_varNames = Names({"v", "w"});
  config.m_plcNodes.AddTail(node);
  return config;
}

class InputPage : public testing::Test {
 protected:
  CScriptedDriver m_driver;
  CSheetUser m_user;
  CInputPage m_page;
};

// A letter for each control that is enabled, an x for each that is checked, and the period.
std::string Controls(QWidget* window) {
  std::string state;
  for (const char* caption : {"Add net node...", "Edit net node...", "Delete Node", "Select Files...",
                              "Variable List...", "Preprocessed equations..."})
    if (Find<QAbstractButton>(window, caption)->isEnabled()) state += caption[0];
  if (Find<QListWidget>(window, "Net nodes")->isEnabled()) state += "+";
  for (const char* caption : {"Simulating", "Preprocess input", "As fast as possible", "Auto Start"})
    state += StateOf(window, caption);
  return state + " " + StateOf(window, "Scan period :");
}

TEST_F(InputPage, ControlsDependOnTheChoices) {
  CInputConfig config;
  config.m_scanPeriod = 77;
  config.m_simulating = config.m_preprocess = config.m_asFastAsPossible = config.m_autoStart = 1;
  m_page.SetConfiguration(config);
  const auto expect = [](const char* state) { return [=](QWidget* w) { EXPECT_EQ(Controls(w), state); }; };
  m_user.Run({&m_page}, {expect("SVPxxxx -77"), "Auto Start / Connected", expect("AEDVP+xx -77"),
                         "Scan period :", expect("AEDVP+x 5000"), "Scan period :=1234 / Preprocess input",
                         expect("AED+ 1234"), "As fast as possible", expect("AED+x -10"), "Simulating",
                         expect("Sxx -10")});
}

TEST_F(InputPage, EditsGoToTheConfiguration) {
  const CInputConfig config = Config();
  CInputConfig wanted = config;
  const auto edit = [&](const CSteps& steps) {
    m_page.SetConfiguration(config);
    EXPECT_EQ(m_user.Run({&m_page}, steps), IDOK);
    EXPECT_EQ(Held<CInputConfig>(m_page, config), TextOf(wanted));
  };
  wanted.m_preprocess = 1;
  edit(
      {"Preprocess input / Variable List... / ->> / Cancel / Preprocessed equations... / Equations=z = 1; / "
       "Cancel / Simulating / Select Files... / Connected / OK"});
  wanted.m_autoStart = wanted.m_simulating = 1;
  wanted.m_scanPeriod = 65000;
  wanted.m_preNewVars = Names({"b", "v", "w"});
  wanted.m_preEquations = Names({"y = b", " z = y"});
  wanted.m_preEquationText = "y = b; z = y";
  wanted.m_inputFiles.RemoveAll();
  for (const char* path : {"/z.rph", "/a.rph"}) wanted.m_inputFiles.AddTail(path);
  m_user.chooser.paths = Names({"/z.rph", "/a.rph"});
  edit(
      {"Preprocess input / Variable List... / Available Vars?v,w, / Selected Vars?b, / ->> / OK / "
       "Preprocessed equations... / Equations?x = b; / Equations=y = b; z = y / OK / Scan period :=65000 / "
       "Auto Start / Simulating / Select Files... / OK"});
  EXPECT_EQ(m_user.chooser.file.filter, "Heat Files (*.rph)|*.rph||");
  wanted = config;
  wanted.m_scanPeriod = 5000;
  edit({"As fast as possible / Scan period : / OK"});
  wanted.m_scanPeriod = 10;
  wanted.m_asFastAsPossible = wanted.m_simulating = 1;
  wanted.m_plcNodes.RemoveAll();
  // Without a node the names are not known: no list opens.
  edit(
      {"As fast as possible / Net nodes#0 / Delete Node / Preprocess input / Variable List... / Preprocess "
       "input / Simulating / OK"});
}

TEST_F(InputPage, ThePageRefusesSettingsThatCannotWork) {
  const std::string kPeriod = "!Please enter a whole number from 10 to 65000.";
  const struct {
    const char* period;
    std::string told;  // "!": the page can be left
    bool isEmpty = false;
  } kCases[] = {
      {"9", kPeriod, true},
      {"65001", kPeriod},
      {"", kPeriod},
      {"10",
       "!Wrong Configuration!!\n If the logger is going to be connected to a PLC net, you must select "
       "one net node at least",
       true},
      {"10", "!"},
      {"65000", "!"}};
  CPlcWritePage other;
  for (const auto& c : kCases) {
    m_page.SetConfiguration(c.isEmpty ? CInputConfig() : Config());
    const auto turn = [&](QWidget* window) {
      auto* tabs = window->findChild<QTabWidget*>();
      tabs->setCurrentIndex(1);
      EXPECT_EQ(tabs->currentIndex(), c.told == "!" ? 1 : 0);
    };
    const auto turnBack = [](QWidget* window) { window->findChild<QTabWidget*>()->setCurrentIndex(0); };
    m_user.Run({&m_page, &other},
               {std::string("Scan period :=") + c.period, turn, c.told, turnBack,
                std::string("Scan period :?") + c.period + " / Apply / " + c.told + " / Cancel"});
  }
}

// Gives one answer after the other, then IDYES.
class CAnswers : public CTestPrompter {
 public:
  explicit CAnswers(std::vector<int> answers) : m_answers(std::move(answers)) {}
  int Show(const CString& text, const CString& title, UINT type) override {
    answer = asked.size() < m_answers.size() ? m_answers[asked.size()] : IDYES;
    return CTestPrompter::Show(text, title, type);
  }

 private:
  std::vector<int> m_answers;
};

TEST_F(InputPage, ApplyAsksBeforeItErasesEquations) {
  const std::string kErased = " equations are not valid and will be erased.\n Continue anyway?|34",
                    kPre = "|Preprocess" + kErased, kTrend = "|Trendings/Grid" + kErased,
                    kOpen =
                        "|Changes can't be made until the Trendings/Grid configuration dialog is closed!|30";
  enum EOptions { absent, present, open, openAndAbsent };
  const struct {
    EOptions options;
    CStringArray pre, trend;
    std::vector<int> answers;
    CTexts asked;
    bool isApplied;
    const char* left;  // of pre and of trend
  } kCases[] = {
      // a may be read
      {present, {}, {}, {}, {}, true, "|"},
      {present, Names({"y = x", "x = a"}), Names({"t = t + a"}), {}, {}, true, "y = x,x = a,|t = t + a,"},
      {present, Names({"x = b"}), Names({"t = a"}), {IDYES}, {kPre}, true, "|t = a,"},
      {present, Names({"x = a"}), Names({"t = x"}), {IDNO}, {kTrend}, false, "x = a,|t = x,"},
      {present, Names({"x = a"}), Names({"t = x"}), {IDYES}, {kTrend}, true, "x = a,|"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDNO}, {kPre}, false, "x = b,|t = b,"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDYES, IDNO}, {kPre, kTrend}, false, "x = b,|t = b,"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDYES, IDYES}, {kPre, kTrend}, true, "|"},
      {absent, Names({"x = b"}), Names({"t = b"}), {}, {kPre}, true, "|t = b,"},
      {open, Names({"x = b"}), Names({"t = b"}), {}, {kOpen}, false, "x = b,|t = b,"},
      {openAndAbsent, Names({"x = a"}), {}, {}, {}, true, "x = a,|"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(Joined(c.pre) + "|" + Joined(c.trend));
    CInputConfig config = Config();
    config.m_preNewVars = Names({"a"});
    config.m_preEquations = c.pre;
    m_page.SetConfiguration(config);
    CLogTrendings trendings;
    CTrendConfig& trend = *trendings.GetOptions();
    trend.m_equations = c.trend;
    trend.m_equationText = "trend";
    m_page.m_pTrendOptions = c.options == absent || c.options == openAndAbsent ? nullptr : &trend;
    CTrendFacadeDlg dialog;
    dialog.SetInputPointers(nullptr, &trendings);
    if (c.options >= open) dialog.Create();
    CAnswers answers(c.answers);
    EXPECT_EQ(m_user.Run({&m_page}, {"OK"}), c.isApplied ? IDOK : IDCANCEL);
    EXPECT_EQ(answers.Take(), c.asked);
    m_page.GetConfiguration(config);
    EXPECT_EQ(Joined(config.m_preEquations) + "|" + Joined(trend.m_equations), c.left);
    EXPECT_EQ(config.m_preEquationText, config.m_preEquations == c.pre ? "x = b;" : "");
    EXPECT_EQ(trend.m_equationText, trend.m_equations == c.trend ? "trend" : "");
  }
}

}  // namespace
}  // namespace vastra
