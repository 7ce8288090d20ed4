// The state of the plant: what the rows say, without a window; and stories in the main window.
#include <QTabWidget>
#include <QTableView>

#include "host/common/configuration_file.h"
#include "host/desktop/chart_windows.h"
#include "host/desktop/plant_state.h"
#include "host/desktop/plant_words.h"
#include "tests/host/desktop_window.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

using namespace std::chrono_literals;

CPlantNow After(std::chrono::milliseconds time) {
  CPlantNow now = {std::chrono::steady_clock::time_point(time), {}};
  now.wall.time = 1'000'000 + static_cast<std::int32_t>(time / 1s);
  return now;
}

// A logger of two nodes, an output and a written node that has run for a second.
class Plant : public testing::Test {
 protected:
  Plant() {
    SetConfiguration();
    m_run.isRunning = true;
    m_run.isStopped = false;
    m_run.period = 1s;
    m_newest.number = m_newest.counts.scans.read = 10;
    m_newest.read = After(1s).steady;
    m_newest.time = After(1s).wall;
    SetNodes();
    SetLedger({});
  }
  void SetConfiguration(const char* output = R"("saveCsv": 1, "maxSamples": 100)") {
    const std::string node = R"("driver": {"plcType": 9001}, "varNames": ["a"]})";
    CConfiguration configuration;
    EXPECT_EQ(
        ParseConfiguration(R"({"input": {"plcNodes": [{"nodeName": "M", )" + node +
                               R"(, {"nodeName": "N", )" + node + R"(]}, "outputs": [{"name": "All", )" +
                               output + R"(}], "plcWrite": {"nodes": [{"nodeName": "P", )" + node + "]}}",
                           "/", configuration),
        "");
    m_state.SetConfiguration(configuration, 2);
  }
  void SetNodes(bool isUp = true, bool hasAnswered = true, const char* reason = "") {
    CNodeState m = {"M", true, {}, "", {}, true}, n = {"N", isUp, {}, reason, {}, hasAnswered};
    n.since = After(1s).wall;
    if (!isUp) n.next = After(31s).wall;
    m_newest.nodes = std::make_shared<const std::vector<CNodeState>>(std::vector<CNodeState>{m, n});
  }
  void SetLedger(const CLogLedger& ledger) {
    m_newest.ledger =
        std::make_shared<const std::vector<CRunLedger>>(std::vector<CRunLedger>{{"All", false, ledger}});
  }
  std::string Row(EPart part, CString CPlantRow::*text = &CPlantRow::state, int index = 0) const {
    for (const CPlantRow& row : m_state.Rows())
      if (row.part == part && row.index == index)
        return std::string(text == &CPlantRow::state ? WordOf(row.condition) : "") + "|" + (row.*text).Std();
    return "none";
  }
  void Look(std::chrono::milliseconds time) { m_state.Look(m_run, m_newest, After(time)); }
  Texts Problems() const {
    Texts texts;
    for (const CPlantProblem& problem : m_state.Problems()) texts.push_back(problem.text.Std());
    return texts;
  }

  CPlantState m_state;
  CPlantRun m_run;
  CLiveNewest m_newest;
};

TEST_F(Plant, AValueIsOldAfterThreePeriodsAndTwoSecondsAtLeast) {
  using CSpan = std::chrono::milliseconds;
  const std::tuple<CSpan, CSpan, const char*, const char*, const char*> cases[] = {
      {1s, 3s, "good|good", "good|good", "|3 s"},
      {1s, 3001ms, "failed|no sample for 3 s", "waiting|no answer for 3 s", "|3 s (old)"},
      {10ms, 1900ms, "good|good", "good|good", "|1 s"},
      {10ms, 2100ms, "failed|no sample for 2 s", "waiting|no answer for 2 s", "|2 s (old)"}};
  for (const auto& [period, age, input, node, value] : cases) {
    m_run.period = period;
    Look(1s + age);
    EXPECT_EQ(Row(EPart::input), input);
    EXPECT_EQ(Row(EPart::node), node);
    EXPECT_EQ(Row(EPart::node, &CPlantRow::lastValue), value);
    EXPECT_EQ(Problems().size(), *input == 'f') << input;
  }
}

TEST_F(Plant, ANodeThatIsAwayIsShownUntilItIsBack) {
  const auto at = [](std::chrono::milliseconds time) {
    return ClockText(After(time).wall, After(0s).wall).Std();
  };
  const std::string away = "away since " + at(1s) + ": no route; next attempt " + at(31s);
  for (const bool hasAnswered : {true, false}) {
    SetNodes(false, hasAnswered, "no\nroute");
    Look(1500ms);
    EXPECT_EQ(Row(EPart::node, &CPlantRow::state, 1), "away|" + away);
    EXPECT_EQ(Row(EPart::node, &CPlantRow::lastValue, 1), hasAnswered ? "|now" : "|none yet");
    EXPECT_EQ(Row(EPart::node), "good|good");
    EXPECT_EQ(Row(EPart::input), "away|1 of 2 away");
    EXPECT_EQ(Problems(), Texts{"The node \"N\" is " + away});
  }
  SetNodes();
  Look(1500ms);
  EXPECT_EQ(Row(EPart::input), "good|good");
  EXPECT_EQ(Problems(), Texts());
}

TEST_F(Plant, WhatALogLosesIsShown) {
  CLogLedger ledger;
  ledger.offered = 200, ledger.taken = 100, ledger.inJournal = 40, ledger.onDisk = 58, ledger.inMemory = 2;
  SetLedger(ledger);
  Look(1s);
  EXPECT_EQ(Row(EPart::output), "good|good");
  EXPECT_EQ(Row(EPart::output, &CPlantRow::rows), "|100");
  EXPECT_EQ(Row(EPart::output, &CPlantRow::files), "|2 in memory, 40 in a journal");
  const CLastLog saved = {{"outputs[0]", "All"}, "/logs/a.csv", {}, After(1s).wall, 58, {}};
  m_newest.saved = {std::make_shared<const CLastLog>(saved)};
  Look(1s);  // 58 rows are free, which needs 116 scans
  const auto at = [](auto time) { return ClockText(After(time).wall, After(0s).wall).Std(); };
  EXPECT_EQ(Row(EPart::output, &CPlantRow::files),
            "|a.csv to " + at(1s) + ", 2 in memory, 40 in a journal, full about " + at(110s));

  ledger.Lose("No space", 2, {}, {});
  SetLedger(ledger);
  CLastLog unsaved = saved;
  unsaved.reason = "Read-only";
  m_newest.unsaved = {std::make_shared<const CLastLog>(unsaved)};
  SetNodes(false, true, "off");
  Look(1s);
  EXPECT_EQ(Row(EPart::output), "failed|not saved: Read-only");
  EXPECT_EQ(Row(EPart::outputs), "failed|failed");
  ASSERT_EQ(Problems().size(), 3u);
  EXPECT_EQ(Problems()[0], "The output \"All\" is not saved: Read-only (/logs/a.csv)");
  EXPECT_EQ(Problems()[1], "The output \"All\": 2 rows lost: No space");
  m_newest.unsaved.clear();
  Look(1s);
  EXPECT_EQ(Row(EPart::output), "failed|2 rows lost: No space");
}

TEST_F(Plant, AnAcknowledgedProblemIsSilentUntilItIsAnotherOne) {
  CLogLedger ledger;
  const auto lose = [&](std::chrono::seconds time) {
    ledger.Lose("No space", 1, {}, {});
    SetLedger(ledger);
    m_newest.read = After(time).steady;
    Look(time);
    const std::size_t problems = Problems().size();
    if (problems) m_state.Acknowledge(CString(m_state.Problems()[0].identity));
    EXPECT_EQ(Problems(), Texts());
    return problems;
  };
  EXPECT_EQ(lose(1s), 1u);
  EXPECT_EQ(lose(2s), 0u);
  EXPECT_EQ(Row(EPart::output)[0], 'w') << "acknowledged losses do not hide the present state";
  EXPECT_EQ(lose(50s), 0u);
  EXPECT_EQ(lose(111s), 1u) << "after a pause it is another loss";

  // It has been back for less than a minute at 172 s, and has gone before the look at 297 s.
  const std::tuple<bool, std::chrono::seconds, bool> looks[] = {
      {false, 112s, true}, {true, 113s, false}, {false, 172s, false}, {true, 233s, false},
      {false, 234s, true}, {true, 235s, false}, {true, 296s, false},  {false, 297s, true}};
  for (const auto& [isUp, time, isShown] : looks) {
    SetNodes(isUp);
    m_newest.read = After(time).steady;
    Look(time);
    EXPECT_EQ(!Problems().empty(), isShown) << time.count();
    if (isShown) m_state.Acknowledge(CString(m_state.Problems()[0].identity));
  }
}

TEST_F(Plant, SettingsThatLoseEverythingAreReportedBeforeTheStart) {
  m_run = {};
  m_newest = {};
  const char* const cases[][2] = {
      {R"("saveCsv": 1, "maxLogs": 0)", "The output \"All\" keeps 0 logs: each log is removed at once"},
      {R"("maxLogs": 1)", "No output saves anything: the samples are only shown"},
      {R"("saveRp": 1)", ""}};
  for (const auto& [output, problem] : cases) {
    SetConfiguration(output);
    Look(1s);
    EXPECT_EQ(Problems(), *problem ? Texts{problem} : Texts()) << output;
  }
  EXPECT_EQ(Row(EPart::output), "off|stopped");
  for (const auto& [fault, part] :
       {std::pair("outputs[0].directory: none", EPart::output), std::pair("outputs: none", EPart::outputs),
        std::pair("plcWrite.nodes[0]: none", EPart::writtenNode)}) {
    m_run.startFault = fault;
    Look(1s);
    EXPECT_EQ(Row(part), std::string("failed|") + fault);
    EXPECT_EQ(Problems(), Texts{std::string("The logger did not start: ") + fault});
  }
}

TEST_F(Plant, FailuresAreCountedInTheRowOfTheirStage) {
  m_newest.counts.scans.failedReads = 1;
  m_newest.counts.scans.failedWrites = {0, 2, 3, 4, 5};
  Look(1s);
  const std::pair<EPart, const char*> cases[] = {{EPart::input, "failed, 1 failed read"},
                                                 {EPart::outputs, "failed, 2 failed writes"},
                                                 {EPart::summaries, "failed, 3 failed writes"},
                                                 {EPart::plcWrite, "failed, 4 failed writes"},
                                                 {EPart::trend, "failed, 5 failed writes"}};
  for (const auto& [part, text] : cases) EXPECT_EQ(Row(part), std::string("failed|") + text);
  m_newest.read = After(7s).steady;
  Look(7s);
  EXPECT_EQ(Row(EPart::trend), "good|good, 5 failed writes");
}

TEST(PlantWords, AgesHaveWholeSeconds) {
  const std::pair<int, const char*> cases[] = {
      {0, "now"}, {1, "1 s"}, {9, "9 s"}, {10, "10 s"}, {60, "1 min 0 s"}};
  for (const auto& [age, text] : cases) EXPECT_EQ(AgeText(std::chrono::seconds(age)).Std(), text);
}

class PlantStory : public Desktop {
 protected:
  static std::string State(CTestWindow& window, const char* part) {
    return Part(window, part)->text(1).toStdString();
  }
  static bool IsShown(CTestWindow& window, const char* problem) {
    const auto* label = Find<QLabel>(&window, "Problem");
    return label->isVisible() && label->text().contains(problem);
  }
};

// Also in real windows of X, as the test "screen".
TEST_F(PlantStory, ADeviceDiesAndComesBackInEachWindow) {
  WriteBytes(m_demo, R"({"input": {"scanPeriod": 20, "plcNodes": [
{"nodeName": "Kiln", "absent": "nan", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]},
{"nodeName": "Dead", "absent": "nan", "driver": {"plcType": 9077}, "varNames": ["b", "c"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["b"], "saveRp": 1, "directory": "."}]})");
  ::setenv("FAULT", "none", 1);
  CTestWindow window(m_demo);
  auto* tree = Find<QTreeWidget>(&window, "Plant");
  tree->setCurrentItem(Part(window, "Kiln"));
  window.Start();
  ASSERT_TRUE(Wait([&] { return State(window, "Dead") == "good"; }));
  for (const Qt::Key key : {Qt::Key_4, Qt::Key_5, Qt::Key_6}) {
    window.activateWindow();
    ASSERT_TRUE(Wait([&] { return window.isActiveWindow(); }));
    QTest::keyClick(&window, key, Qt::ControlModifier);
  }
  auto* const chart = static_cast<CChartWindow*>(TopLevel("Chart"));
  ASSERT_TRUE(chart && TopLevel("Values") && TopLevel("Message Log"));
  auto* list = Find<QTreeWidget>(chart, "Variables");
  const auto found = [&] { return list->findItems("b", Qt::MatchExactly | Qt::MatchRecursive); };
  ASSERT_TRUE(Wait([&] { return !found().isEmpty(); }));
  list->scrollToItem(found().front());
  const QPoint place = list->visualItemRect(found().front()).center();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
  EXPECT_TRUE(std::ranges::count(chart->View().State().Variables(), CString("b")));
  const QAbstractItemModel* values = Find<QTableView>(TopLevel("Values"), "Values")->model();
  const auto age = [&] { return values->index(1, CValueTable::columnAge).data().toString(); };
  const auto isMarked = [&] {
    const CChartState& shown = chart->View().State();  // the curves: a, b, c
    return std::ranges::any_of(shown.StepsOf(1), &CCurveStep::hasInvalid) && shown.AwayOf(0).empty() &&
           !shown.AwayOf(1).empty() && shown.ValueOf(1, {}).isAway;
  };
  ASSERT_TRUE(Wait([&] { return !age().isEmpty(); }));
  EXPECT_FALSE(age().startsWith("away") || isMarked());
  ::setenv("FAULT", "words fail", 1);
  ASSERT_TRUE(Wait([&] { return State(window, "Dead").starts_with("away since "); }));
  EXPECT_NE(State(window, "Dead").find("It does not work."), std::string::npos) << State(window, "Dead");
  EXPECT_EQ(State(window, "Input"), "1 of 2 away");
  EXPECT_EQ(State(window, "Kiln"), "good");
  EXPECT_TRUE(Wait([&] { return age().startsWith("away"); }));
  EXPECT_TRUE(Wait([&] { return Logged(TopLevel("Message Log"), "Dead", "It does not work.") > 0; }));
  EXPECT_TRUE(Wait(isMarked)) << "the chart does not show that the node is away";
  EXPECT_TRUE(IsShown(window, "\"Dead\" is away"));
  window.activateWindow();
  tree->setFocus();
  ASSERT_TRUE(Wait([&] { return window.isActiveWindow(); }));
  QTest::keyClick(tree, Qt::Key_K, Qt::ControlModifier);
  EXPECT_FALSE(IsShown(window, "Dead")) << "the key acknowledges";
  ::setenv("FAULT", "none", 1);
  EXPECT_TRUE(Wait([&] { return State(window, "Dead") == "good" && !age().startsWith("away"); }));
  EXPECT_EQ(tree->currentItem()->text(0), "Kiln") << "the tree was filled again";
  EXPECT_TRUE(Stops(window));
  ::unsetenv("FAULT");
}

TEST_F(PlantStory, AFolderThatCannotBeWrittenIsReportedUntilItCan) {
  const CString folder = m_dir / "logs";
  std::filesystem::create_directory(folder.Std());
  WriteBytes(m_demo, R"({"input": {"scanPeriod": 10, "plcNodes": [
{"nodeName": "N", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["a"], "saveCsv": 1, "maxSamples": 5,
"directory": "logs"}]})");
  CTestWindow window(m_demo);
  EXPECT_EQ(State(window, "All"), "stopped");
  window.Start();
  ASSERT_TRUE(Wait([&] { return Part(window, "All")->text(4).contains(".csv to "); }));
  EXPECT_EQ(State(window, "All"), "good");
  std::filesystem::rename(folder.Std(), (folder + ".away").Std());
  ASSERT_TRUE(Wait([&] { return IsShown(window, "is not saved: No such file or directory"); }));
  EXPECT_TRUE(State(window, "All").starts_with("not saved: ")) << State(window, "All");
  Click(&window, "&Acknowledge");
  EXPECT_FALSE(IsShown(window, "not saved"));
  std::filesystem::rename((folder + ".away").Std(), folder.Std());
  EXPECT_TRUE(Wait([&] { return State(window, "All") == "good"; }));
  EXPECT_TRUE(Stops(window));
}

TEST_F(PlantStory, AnEntryOpensItsPageOfTheSheetAndItsDialog) {
  CTestWindow window(m_demo);
  auto* tree = Find<QTreeWidget>(&window, "Plant");
  const char* const cases[][3] = {{"Input", "Input", "Configuration"},
                                  {"N", "Input", "Node"},
                                  {"All", "Output", "Output"},
                                  {"PLC write", "Plc Write", "Configuration"}};
  for (const auto& [part, page, dialog] : cases) {
    tree->setCurrentItem(Part(window, part));
    const auto isShown = [&, page = page, dialog = dialog](QWidget*) {
      QWidget* const sheet = TopLevel("Configuration");
      auto* tabs = sheet->findChild<QTabWidget*>();
      EXPECT_EQ(tabs->tabText(tabs->currentIndex()).toStdString(), page);
      EXPECT_TRUE(Wait([&] { return QApplication::activeModalWidget() == TopLevel(dialog); }));
      if (QWidget* over = TopLevel(dialog); over && over != sheet) over->close();
      QTimer::singleShot(0, sheet, &QWidget::close);
    };
    WhileModal([&] { QTest::keyClick(tree, Qt::Key_Return); }, isShown);
  }
}

}  // namespace
}  // namespace vastra
