// The check of a configuration in the words of its forms: before a start, on request, and after a change
// while the logger runs.
#include <QAbstractButton>
#include <QPlainTextEdit>
#include <QTreeWidget>

#include "host/desktop/place_words.h"
#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"

namespace vastra {
namespace {

TEST(PlaceWords, PlacesAndMessagesHaveTheWordsOfTheForms) {
  CConfiguration configuration;
  ASSERT_EQ(ParseConfiguration(R"({"input": {"plcNodes": [{"nodeName": "N", "driver": {"plcType": 7}}]},
"outputs": [{"name": "Kiln"}, {}], "summaries": [{"name": "outputs[0]"}], "plcWrite": {"nodes": [{}]}})",
                               "/", configuration),
            "");
  const CPlaceWords words(configuration, [](int plcType, const CString& field) {
    return plcType == 7 && field == "text2" ? CString("Values") : CString();
  });
  const char* const cases[][2] = {
      {"outputs[0].maxLogs: 0 removes", "output \"Kiln\", Maximum number of logs stored: 0 removes"},
      {"outputs[1].varNames[2]: x", "output 2, variable 3: x"},
      {"outputs[9].prefix: x", "output 10, Use prefix for the log names: x"},
      {"outputs: x", "outputs: x"},
      {"summaries[0].summaryText: statement 2: x", "summary \"outputs[0]\", summary equation 2: x"},
      {"input.preEquationText: statement 12: \"a\" stays NaN", "input, equation 12: \"a\" stays NaN"},
      {"input.plcNodes[0].scaler[4].scale: 0", "node \"N\", Scaler, row 5: 0"},
      {"input.plcNodes[0].driver: text2: no register", "node \"N\", Values: no register"},
      {"input.plcNodes[0].driver: text2 is empty", "node \"N\", Values: is empty"},
      {"input.plcNodes[0].driver: text3: x", "node \"N\", Configure PLC: text3: x"},
      {"plcWrite.nodes[0].driver.plcType: no driver 7", "written node 1, Type of PLC: no driver 7"},
      {"smart.inputVars[0]: x", "smart stage, Smart Input Variables, entry 1: x"},
      {"clock: x", "clock: x"},
      {"input.newKey: x", "input, newKey: x"},
      {"input: the stage does not open: input.inputFiles[1]: /a/outputs[0].rph: No such file",
       "input, file 2: /a/outputs[0].rph: No such file"},
      {"outputs[0].directory: the logs of outputs[1] can meet",
       "output \"Kiln\", Path: the logs of output 2 can meet"},
      {"input.plcNodes[0].aliveVar: \"outputs[0]\" is in input.plcNodes[0].varNames already",
       "node \"N\", Alive variable: \"outputs[0]\" is in node \"N\", Variable List already"},
      {"no key: outputs[1].maxLogs", "no key: output 2, Maximum number of logs stored"},
  };
  for (const auto& [line, expected] : cases) EXPECT_EQ(words.Fault(CString(line)).Line(), expected) << line;
  for (const auto& [part, expected] :
       {std::pair("outputs[0] \"Former: 2\"", "output \"Former: 2\""),
        std::pair("summaryText", "Summary Equations"), std::pair("name", "name")})
    EXPECT_EQ(words.Place(part), expected);
}

class CheckWindow : public Desktop {
 protected:
  // The rows of the list: the kind, the place and the text.
  static Texts Findings() {
    Texts lines;
    QWidget* window = TopLevel("Check");
    if (!window) return {"closed"};
    const auto* list = Find<QTreeWidget>(window, "Findings");
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      const QTreeWidgetItem& item = *list->topLevelItem(i);
      lines.push_back((item.text(0).left(1) + " " + item.text(1) + ": " + item.text(2)).toStdString());
    }
    return lines;
  }
  static bool Has(const char* label) { return Says(*TopLevel("Check"), label); }
  static bool Offers(const char* button) {
    return Find<QAbstractButton>(TopLevel("Check"), button)->isVisible();
  }
};

TEST_F(CheckWindow, WhatPreventsAStartIsListedInTheWordsOfTheForms) {
  const std::pair<std::string, Texts> cases[] = {
      {Configuration(kSimulator,
                     R"(, "preprocess": 1, "preNewVars": ["a", "b"], "preEquationText": "x = a; y = ;")"),
       {"E input, equation 2: no statement of the language"}},
      {Configuration(kSimulator, R"(, "preprocess": 1, "preNewVars": ["Temperature", "b"],
"preEquationText": "Temperature = a; y = Tempereture;")"),
       {"E output \"All\", variable 1: there is no variable \"a\"",
        "E input, equation 2: there is no variable \"Tempereture\"; did you mean \"Temperature\"?",
        "E trend, equation 1: there is no variable \"a\""}},
      {Configuration(R"({"plcType": 9001, "text1": "sign"})"),
       {"E node \"N\", Waveforms: has an unknown waveform: \"sign\""}},
      {"{}",
       {"E input, Net nodes: there is no PLC node",
        "W outputs: there is no output and no summary: nothing is logged"}}};
  for (const auto& [configuration, findings] : cases) {
    WriteBytes(m_demo, configuration);
    CTestWindow window(m_demo);
    window.Start();
    ASSERT_TRUE(Wait([] { return TopLevel("Check"); }));
    EXPECT_EQ(Findings(), findings);
    EXPECT_TRUE(Says(window, "Stopped"));
    EXPECT_TRUE(Has("the logger cannot start")) << findings[0];
    EXPECT_FALSE(Offers("&Start Anyway"));
  }
}

// Two variables of one name in one node, a name with a blank, 0 samples.
const std::string kOdd =
    R"({"input": {"scanPeriod": 10, "plcNodes": [{"nodeName": "N", "driver": {"plcType": 9001},
"varNames": ["a", "my b", "a"], "scaler": [{"varName": "a", "scale": 0}]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["a"], "saveCsv": 1, "maxSamples": 0,
"directory": "."}]})";

TEST_F(CheckWindow, AStartAsksOnceAboutWarnings) {
  WriteBytes(m_demo, kOdd);
  CTestWindow window(m_demo);
  ActionOf(window, "Start")->trigger();
  const Texts findings = Findings();
  EXPECT_EQ(findings.size(), 4u) << testing::PrintToString(findings);
  EXPECT_TRUE(Has("4 warnings: the logger can start. It has not been started yet."));
  EXPECT_TRUE(Says(window, "Stopped"));
  auto* start = Find<QAbstractButton>(TopLevel("Check"), "&Start Anyway");
  ASSERT_TRUE(Wait([&] { return start->hasFocus(); }));
  QTest::keyClick(start, Qt::Key_Return);
  ASSERT_TRUE(Wait([&] { return Says(window, "Running"); }));
  EXPECT_FALSE(TopLevel("Check"));
  ASSERT_TRUE(Stops(window));
  ASSERT_TRUE(Runs(window));
  ActionOf(window, "Check")->trigger();  // on request, also while it runs
  EXPECT_EQ(Findings(), findings);
  EXPECT_FALSE(Offers("&Start Anyway"));
  ASSERT_TRUE(Stops(window));
  WriteBytes(m_dir / "other.json", kOdd);
  ASSERT_TRUE(window.Open(m_dir / "other.json") && window.Open(m_demo));
  EXPECT_TRUE(Runs(window)) << "it asks again";
}

TEST_F(CheckWindow, NothingIsAskedAboutWhatIsOftenIntended) {
  WriteBytes(m_demo, Configuration(kSimulator, R"(, "preEquationText": "x = a;")"));
  CTestWindow window(m_demo);
  ActionOf(window, "Check")->trigger();
  EXPECT_EQ(Findings(),
            Texts{"W input, Preprocessed equations: is not used, since \"Preprocess input\" is not marked"});
  EXPECT_TRUE(Runs(window));
}

// From the list to the page of the fault, and from there to a running logger.
TEST_F(CheckWindow, AFaultIsRepairedWhereItIsAndTheLoggerStarts) {
  std::string faulty = Configuration(kSimulator);
  WriteBytes(m_demo, faulty.insert(faulty.find("\"saveRp\""), "\"maxLogs\": 0, "));
  CMainWindow window;
  window.show();
  CSheetUser user;
  ASSERT_TRUE(window.Open(m_demo));
  ActionOf(window, "Start")->trigger();
  EXPECT_EQ(
      Findings(),
      Texts{"E output \"All\", Maximum number of logs stored: 0 removes each log as soon as it is written"});
  auto* list = Find<QTreeWidget>(TopLevel("Check"), "Findings");
  ASSERT_TRUE(Wait([&] { return list->hasFocus(); }));
  user.Run([&] { return QTest::keyClick(list, Qt::Key_Return), 1; },
           {"Maximum number of logs stored :=9",
            [](QWidget*) { QTimer::singleShot(100, [] { Click(TopLevel("Configuration"), "OK"); }); }, "OK"});
  EXPECT_EQ(Findings(), Texts());
  EXPECT_TRUE(Has("Nothing is wrong"));
  Click(TopLevel("Check"), "&Start");
  ASSERT_TRUE(Wait([&] { return Says(window, "Running"); }));
  EXPECT_FALSE(TopLevel("Check"));
}

TEST_F(CheckWindow, AChangeOfARunningLoggerRestartsItIfTheUserWantsThat) {
  CTestWindow window(m_demo);
  ASSERT_TRUE(Runs(window, 5));
  window.boxes.answer = IDYES;
  WhileModal([&] { ActionOf(window, "Configuration...")->trigger(); },
             [](QWidget* sheet) {
               Enter(sheet, "Scan period :", "20");
               Click(sheet, "OK");
             });
  EXPECT_EQ(window.boxes.Take().size(), 1u);
  ASSERT_TRUE(Wait([&] { return Says(window, "Stopped"); }));
  ASSERT_TRUE(Wait([&] { return Says(window, "Running") && Samples(window) > 5; }));
  EXPECT_FALSE(Says(window, "next start"));
  EXPECT_EQ(window.Trendings().GetOptions()->m_baseVars.GetSize(), 2);
}

}  // namespace
}  // namespace vastra
