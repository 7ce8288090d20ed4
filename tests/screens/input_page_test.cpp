// The page of the configuration sheet for where samples come from, worked by a user who sees captions.
#include "vastra/screens/input_page.h"

#include <gtest/gtest.h>

#include <QTabWidget>

#include "tests/screens/node_pages.h"
#include "tests/support/configuration_bytes.h"
#include "vastra/platform/archive.h"
#include "vastra/screens/plc_write_page.h"
#include "vastra/screens/trend_facade_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

void Load(CInputConfig& config, const std::string& bytes) {
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load);
  config.Serialize(ar, 1003);
}

std::string Stored(CInputConfig& config) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  config.Serialize(ar, 1003);
  ar.Close();
  return file.Bytes();
}

// A node that the scripted driver knows, with the variables v and w.
void AddNode(CInputConfig& config, const char* name = "node") {
  auto* node = new CPlcNodeConfig;
  node->m_nodeName = name;
  node->m_driver.plcType = SCRIPTED_ID;
  node->m_driver.variableCount = 2;
  node->m_varNames = Names({"v", "w"});
  config.m_plcNodes.AddTail(node);
}

class InputPage : public testing::Test {
 protected:
  // All but the nodes: "source preprocess asFast autoStart period|files|new variables|equations|text".
  std::string State() const {
    CInputConfig config;
    m_page.GetConfiguration(config);
    CString state;
    state.Format("%d %d %d %d %u|", config.m_simulating, config.m_preprocess, config.m_asFastAsPossible,
                 config.m_autoStart, config.m_scanPeriod);
    for (const CString& file : config.m_inputFiles) state += file + ",";
    state += CString("|" + Joined(config.m_preNewVars) + "|" + Joined(config.m_preEquations) + "|");
    return (state + config.m_preEquationText).Std();
  }

  CTestPrompter m_prompter;
  CTestChooser m_chooser;
  CScriptedDriver m_driver;
  CInputPage m_page;
};

TEST_F(InputPage, GivesOutADeepCopyOfWhatCameIn) {
  CInputConfig out;
  for (int i = 0; i < 2; ++i) {  // the second time nodes are there on both sides
    CInputConfig in;
    Load(in, kInput);
    in.m_plcNodes.GetHead()->m_driver.value5 = 15;
    m_page.SetConfiguration(in);
  }
  CInputConfig expected;
  Load(expected, kInput);
  expected.m_asFastAsPossible = 1;  // 4 in the bytes
  m_page.GetConfiguration(out);
  out.m_plcNodes.GetHead()->m_nodeName = "a copy";
  AddNode(out);
  out.m_inputFiles.AddTail("another");
  m_page.GetConfiguration(out);
  EXPECT_EQ(Hex(Stored(expected)), Hex(Stored(out)));
  EXPECT_EQ(15, out.m_plcNodes.GetHead()->m_driver.value5);
}

// A letter for each control that can be used, and what the period shows.
std::string Controls(QWidget* window) {
  std::string state;
  for (const char* caption : {"Add net node...", "Edit net node...", "Delete Node", "Select Files...",
                              "Variable List...", "Preprocessed equations..."})
    if (Find<QAbstractButton>(window, caption)->isEnabled()) state += caption[0];
  if (Find<QListWidget>(window, "Net nodes")->isEnabled()) state += "+";
  for (const char* caption : {"Simulating", "Preprocess input", "As fast as possible", "Auto Start"})
    if (Find<QAbstractButton>(window, caption)->isChecked()) state += "x";
  auto* period = Find<QLineEdit>(window, "Scan period :");
  return state + (period->isEnabled() ? " " : " -") + period->text().toStdString();
}

TEST_F(InputPage, ControlsFollowTheChoices) {
  CInputConfig config;
  AddNode(config);
  config.m_scanPeriod = 77;
  const auto opened = [&] {
    std::string state;
    m_page.SetConfiguration(config);
    RunSheet(
        {&m_page}, [&](QWidget* window) { state = Controls(window); }, "Cancel");
    return state;
  };
  EXPECT_EQ("AED+ 77", opened());
  config.m_autoStart = 1;
  EXPECT_EQ("AED+x 77", opened());
  config.m_simulating = config.m_preprocess = config.m_asFastAsPossible = 1;
  EXPECT_EQ("SVPxxxx -77", opened());
  config = CInputConfig();
  config.m_scanPeriod = 77;
  m_page.SetConfiguration(config);
  const struct {
    const char *click, *state;
  } kSteps[] = {
      {"Simulating", "Sx 1234"},
      {"As fast as possible", "Sxx -10"},
      {"Connected", "AED+x -10"},
      {"Preprocess input", "AEDVP+xx -10"},
      {"Scan period :", "AEDVP+x 5000"},
      {"Preprocess input", "AED+ 1234"},
      {"As fast as possible", "AED+x -10"},
  };
  RunSheet(
      {&m_page},
      [&](QWidget* window) {
        for (const auto& [caption, state] : kSteps) {
          Type("Scan period :", "1234")(window);
          Click(window, caption);
          EXPECT_EQ(state, Controls(window)) << caption;
        }
      },
      "Cancel");
}

CUser Choose(CTestChooser& chooser, const CStringArray& paths) {
  return [&chooser, paths](QWidget* window) {
    chooser.paths = paths;
    Click(window, "Select Files...");
    EXPECT_EQ("Heat Files (*.rph)|*.rph||", chooser.file.filter);
  };
}

TEST_F(InputPage, TakesOverWhatTheUserDoes) {
  const auto variables = [](const CUser& user, const char* end = "OK") {
    return All({Press("Preprocess input"), In("Variable List...", user, end)});
  };
  const CUser kOffered = [](QWidget* window) {
    EXPECT_EQ((CTexts{"v", "w"}), Shown(Find<QListWidget>(window, "Available Vars")));
    EXPECT_EQ((CTexts{"b"}), Shown(Find<QListWidget>(window, "Selected Vars")));
    Click(window, "->>");
  };
  const auto equations = [](const char* text, const char* end = "OK") {
    return All({Press("Preprocess input"), In(
                                               "Preprocessed equations...",
                                               [=](QWidget* window) {
                                                 auto* edit = Find<QPlainTextEdit>(window, "Equations");
                                                 EXPECT_EQ("x = b;", edit->toPlainText().toStdString());
                                                 edit->setPlainText(text);
                                               },
                                               end)});
  };
  const struct {
    const char* what;
    CUser user;
    const char* state;
  } kCases[] = {
      {"nothing", NoUser, "0 0 0 0 700|old,|b,|x = b,|x = b;"},
      {"boxes", All({Press("Auto Start"), Press("As fast as possible")}), "0 0 1 1 10|old,|b,|x = b,|x = b;"},
      {"period", Type("Scan period :", "65000"), "0 0 0 0 65000|old,|b,|x = b,|x = b;"},
      {"source", Press("Simulating"), "1 0 0 0 700|old,|b,|x = b,|x = b;"},
      {"files", All({Press("Simulating"), Choose(m_chooser, Names({"/z.rph", "/a.rph"}))}),
       "1 0 0 0 700|/z.rph,/a.rph,|b,|x = b,|x = b;"},
      {"no files", All({Press("Simulating"), Choose(m_chooser, {})}), "1 0 0 0 700|old,|b,|x = b,|x = b;"},
      {"variables", variables(kOffered), "0 1 0 0 700|old,|b,v,w,|x = b,|x = b;"},
      {"no variables", variables(kOffered, "Cancel"), "0 1 0 0 700|old,|b,|x = b,|x = b;"},
      {"equations", equations("y = b; z = y"), "0 1 0 0 700|old,|b,|y = b, z = y,|y = b; z = y"},
      {"no equations", equations("y = b", "Cancel"), "0 1 0 0 700|old,|b,|x = b,|x = b;"},
      {"names that nobody knows",
       All({Mark("Net nodes", 0), Press("Delete Node"), Press("Preprocess input"), Press("Variable List..."),
            In("Add net node...", MakeNode("n"))}),
       "0 1 0 0 700|old,|b,|x = b,|x = b;"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    CInputConfig config;
    AddNode(config);
    config.m_scanPeriod = 700;
    config.m_inputFiles.AddTail("old");
    config.m_preNewVars = Names({"b"});
    config.m_preEquations = Names({"x = b"});
    config.m_preEquationText = "x = b;";
    m_page.SetConfiguration(config);
    EXPECT_EQ(IDOK, RunSheet({&m_page}, c.user));
    EXPECT_EQ(c.state, State());
    EXPECT_EQ(CTexts(), m_prompter.Take());
  }
}

TEST_F(InputPage, IsNotLeftWithSettingsThatCannotWork) {
  const char* const kPeriod = "|Please enter a whole number from 10 to 65000.|30";
  const char* const kNoNode =
      "|Wrong Configuration!!\n If the logger is going to be connected to a PLC net, you must select one net "
      "node "
      "at least|30";
  const char* const kNoFiles =
      "|Wrong Configuration!!\n If the logger is simulating you must select input logs files|30";
  const char* const kNoVariables =
      "|Wrong Configuration!!\n If the preprocess input option is checked you must select one variable at "
      "least from "
      "the variables list|30";
  const struct {
    const char* period;
    bool simulating, preprocess, hasNode, hasFile, hasVariable;
    const char* told;  // null: the page can be left
  } kCases[] = {
      {"9", false, false, false, false, false, kPeriod},
      {"65001", true, true, false, false, false, kPeriod},
      {"", false, false, true, false, false, kPeriod},
      {"10", false, false, true, false, false, nullptr},
      {"65000", false, true, false, true, false, kNoNode},
      {"65000", true, true, true, false, false, kNoFiles},
      {"65000", true, false, false, true, false, nullptr},
      {"65000", true, true, false, true, false, kNoVariables},
      {"65000", false, true, true, false, false, kNoVariables},
      {"65000", false, true, true, false, true, nullptr},
  };
  CPlcWritePage other;
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::string(c.period) + " " + (c.told ? c.told : ""));
    CInputConfig config;
    if (c.hasNode) AddNode(config);
    if (c.hasFile) config.m_inputFiles.AddTail("/a.rph");
    if (c.hasVariable) config.m_preNewVars = Names({"b"});
    config.m_simulating = c.simulating;
    config.m_preprocess = c.preprocess;
    m_page.SetConfiguration(config);
    const CTexts told = c.told ? CTexts{c.told} : CTexts();
    const CUser user = [&](QWidget* window) {
      auto* tabs = window->findChild<QTabWidget*>();
      Type("Scan period :", c.period)(window);
      tabs->setCurrentIndex(1);
      EXPECT_EQ(c.told ? 0 : 1, tabs->currentIndex());
      EXPECT_EQ(told, m_prompter.Take());
      EXPECT_EQ(c.period, Find<QLineEdit>(window, "Scan period :")->text().toStdString());
      tabs->setCurrentIndex(0);
      Click(window, "Apply");
      EXPECT_EQ(told, m_prompter.Take());
    };
    RunSheet({&m_page, &other}, user, "Cancel");
  }
}

// Gives one answer after the other, and yes behind the last.
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

TEST_F(InputPage, AnApplyAsksBeforeItErasesEquations) {
  const std::string kPre = "|Preprocess equations are not valid and will be erased.\n Continue anyway?|34";
  const std::string kTrend =
      "|Trendings/Grid equations are not valid and will be erased.\n Continue anyway?|34";
  const std::string kOpen =
      "|Changes can't be made until the Trendings/Grid configuration dialog is closed!|30";
  enum EOptions { absent, present, open, openAndAbsent };
  const struct {
    EOptions options;
    CStringArray pre, trend;
    std::vector<int> answers;
    CTexts asked;
    bool applied;
    const char* left;  // of pre and of trend
  } kCases[] = {
      {present, {}, {}, {}, {}, true, "|"},
      {present,
       Names({"x = a", "x = x + a"}),
       Names({"t = t + a"}),
       {},
       {},
       true,
       "x = a,x = x + a,|t = t + a,"},
      {present, Names({"y = x", "x = a"}), {}, {}, {}, true, "y = x,x = a,|"},
      {present, Names({"x = b"}), {}, {IDNO}, {kPre}, false, "x = b,|"},
      {present, Names({"x = b"}), Names({"t = a"}), {IDYES}, {kPre}, true, "|t = a,"},
      {present, Names({"x = a", "a"}), {}, {IDYES}, {kPre}, true, "|"},
      {present, Names({"x = a"}), Names({"t = x"}), {IDNO}, {kTrend}, false, "x = a,|t = x,"},
      {present, Names({"x = a"}), Names({"t = x"}), {IDYES}, {kTrend}, true, "x = a,|"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDNO}, {kPre}, false, "x = b,|t = b,"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDYES, IDNO}, {kPre, kTrend}, false, "x = b,|t = b,"},
      {present, Names({"x = b"}), Names({"t = b"}), {IDYES, IDYES}, {kPre, kTrend}, true, "|"},
      {absent, Names({"x = a"}), Names({"t = b"}), {}, {}, true, "x = a,|t = b,"},
      {absent, Names({"x = b"}), Names({"t = b"}), {}, {kPre}, true, "|t = b,"},
      {open, Names({"x = b"}), Names({"t = b"}), {}, {kOpen}, false, "x = b,|t = b,"},
      {openAndAbsent, Names({"x = a"}), {}, {}, {}, true, "x = a,|"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(Joined(c.pre) + "|" + Joined(c.trend));
    CInputConfig config;
    AddNode(config);
    config.m_preNewVars = Names({"a"});
    config.m_preEquations = c.pre;
    config.m_preEquationText = "pre";
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
    bool isOpen = false;
    RunSheet(
        {&m_page},
        [&](QWidget* window) {
          Click(window, "OK");
          isOpen = window->isVisible();
        },
        "Cancel");
    EXPECT_EQ(c.applied, !isOpen);
    EXPECT_EQ(c.asked, answers.Take());
    m_page.GetConfiguration(config);
    EXPECT_EQ(c.left, Joined(config.m_preEquations) + "|" + Joined(trend.m_equations));
    EXPECT_EQ(config.m_preEquations == c.pre ? "pre" : "", config.m_preEquationText);
    EXPECT_EQ(trend.m_equations == c.trend ? "trend" : "", trend.m_equationText);
  }
}

}  // namespace
}  // namespace vastra
