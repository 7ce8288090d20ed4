// The configuration sheet in the desktop, worked by a user who clicks and types.
#include <QTabWidget>
#include <QTableView>

#include <nlohmann/json.hpp>
#include <set>

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"
#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/configuration_bytes.h"
#include "vastra/stages/log_input.h"

namespace vastra {
namespace {

using nlohmann::json;

enum EPage { pageInput, pageOutput, pageSummary, pageSmart, pagePlcWrite };

CStep Tab(EPage page) {
  return [=](QWidget* sheet) { sheet->findChild<QTabWidget*>()->setCurrentIndex(page); };
}

// Selects the names among the available variables and adds them.
CStep Choose(const std::vector<const char*>& names) {
  return [=](QWidget* dialog) {
    auto* list = Find<QListWidget>(dialog, "Available Vars");
    for (const char* name : names)
      for (QListWidgetItem* item : list->findItems(name, Qt::MatchExactly)) item->setSelected(true);
    Click(dialog, "->");
  };
}

std::vector<std::string> FilesIn(const CString& folder, const char* extension) {
  std::set<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Std()))
    if (entry.path().extension() == extension) paths.insert(entry.path().string());
  return {paths.begin(), paths.end()};
}

// The samples of the binary logs in folder, in the order of their variables.
std::vector<std::vector<float>> Log(const CString& folder) {
  CLogInput replay;
  replay.GetOptions()->m_simulating = 1;
  for (const std::string& path : FilesIn(folder, ".rph"))
    replay.GetOptions()->m_inputFiles.AddTail(CString(path));
  std::vector<std::vector<float>> rows;
  CLogSample sample;
  EXPECT_TRUE(replay.Open());
  while (replay.Read(sample)) rows.emplace_back(sample.m_values.begin(), sample.m_values.end());
  return rows;
}

// The program has been started in folder while the object exists.
struct CStartedIn {
  explicit CStartedIn(const CString& folder) { std::filesystem::current_path(folder.Std()); }
  ~CStartedIn() { std::filesystem::current_path(m_former); }
  std::filesystem::path m_former = std::filesystem::current_path();
};

class ConfigurationSheet : public Desktop {
 protected:
  ConfigurationSheet() { m_window.show(); }

  void Open(const std::string& text) {
    WriteBytes(m_dir / "sheet.json", text);
    ASSERT_TRUE(m_window.Open(m_dir / "sheet.json"));
  }
  void Edit(const CSteps& steps) {
    m_user.Run([&] { return ActionOf(m_window, "Configuration...")->trigger(), 1; }, steps);
  }
  // What the document holds, saved at name.
  json Saved(const char* name = "saved.json") {
    m_user.chooser.path = m_dir / name;
    ActionOf(m_window, "Save As...")->trigger();
    CConfiguration saved;
    EXPECT_EQ(LoadConfiguration(m_dir / name, saved), "");
    std::string text;
    EXPECT_EQ(ConfigurationToJson(saved, text), "");
    return json::parse(text);
  }
  // Starts the logger and waits for so many samples.
  bool Run(int samples) {
    m_window.Start();
    return Wait([&] { return HasStatus(m_window, "Running"); }) && RunsOn(samples);
  }
  bool RunsOn(int samples) {
    const int end = Samples(m_window) + samples;
    return Wait([&] { return Samples(m_window) >= end; });
  }
  bool Stop() {
    ActionOf(m_window, "Stop")->trigger();
    return Wait([&] { return HasStatus(m_window, "Stopped"); });
  }

  CStartedIn m_here{m_dir.Path()};
  CMainWindow m_window;
  CSheetUser m_user;  // expects no other boxes than those in its steps
};

TEST_F(ConfigurationSheet, NothingIsLostByLookingAtEachPage) {
  json full = json::parse(kJson);
  full.merge_patch(json::parse(R"({
"input": {"asFastAsPossible": 1, "preprocess": 1, "preEquationText": "y = y;", "preEquations": ["y = y"]},
"trend": {"equationText": "x = y;", "equations": ["x = y"]}, "plcWrite": {"disableWriting": 1}})"));
  full["plcWrite"]["nodes"][0]["driver"]["value5"] = -5;
  full["input"]["plcNodes"][0]["driver"]["value5"] = -6;
  Open(full.dump());
  Edit({Tab(pageOutput), Tab(pageSummary), Tab(pageSmart), Tab(pagePlcWrite), Tab(pageInput), "Apply / OK"});
  EXPECT_FALSE(m_window.isWindowModified());
  EXPECT_EQ(Saved(), full);
}

TEST_F(ConfigurationSheet, APageThatRefusesStaysInFrontAndNothingIsApplied) {
  ActionOf(m_window, "New")->trigger();
  const std::string refused =
      "!Wrong Configuration!!\n If the logger is going to be connected to a PLC net, you must select one net "
      "node at least";
  Edit({"OK", refused, "Apply", refused, Tab(pageOutput), refused, [](QWidget* sheet) {
          EXPECT_EQ(sheet->findChild<QTabWidget*>()->currentIndex(), pageInput);
          EXPECT_TRUE(sheet->isVisible());
        }});
  EXPECT_FALSE(m_window.isWindowModified());
}

TEST_F(ConfigurationSheet, CancelLeavesWhatWasNotApplied) {
  Open(Configuration(kSimulator));
  m_user.boxes.answer = IDYES;  // the equations of the views read variables that nothing preprocesses
  Edit({Tab(pageInput), "Auto Start / Apply", Tab(pagePlcWrite), "Disable Writing / Cancel"});
  EXPECT_EQ(m_user.boxes.Take().size(), 1u);
  EXPECT_TRUE(m_window.WantsToStart());
  EXPECT_TRUE(m_window.isWindowModified());
  const json saved = Saved();
  EXPECT_EQ(saved["plcWrite"]["disableWriting"], 0);
  EXPECT_EQ(saved["trend"]["equations"], json::array()) << "erased in the stages alone";
}

constexpr const char* kAtNextStart = "!|The logger is running: the changes apply at the next start.|00";

// What is written to the station is read as p.
TEST_F(ConfigurationSheet, WhileTheLoggerRunsOnlyWritingIsTurnedOffAtOnce) {
  Open(R"({"input": {"scanPeriod": 10, "plcNodes": [
{"nodeName": "N", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]},
{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["p"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["a", "p"], "saveRp": 1, "directory": "."}],
"plcWrite": {"nodes": [{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["a"]}]}})");
  ASSERT_TRUE(Run(10));
  Edit({Tab(pagePlcWrite), "Disable Writing / Apply / !",
        [&](QWidget*) { EXPECT_FALSE(HasStatus(m_window, "next start")); }, Tab(pageInput),
        "Auto Start / Apply", kAtNextStart, "OK"});
  EXPECT_TRUE(HasStatus(m_window, "Running (changes apply at the next start)"));
  EXPECT_TRUE(m_window.WantsToStart());
  ASSERT_TRUE(RunsOn(10));
  ASSERT_TRUE(Stop());
  const auto rows = Log(m_dir.Path());
  ASSERT_GT(rows.size(), 10u);
  EXPECT_GT(rows.back()[0], rows.back()[1] + 2) << "writing goes on";

  // A stage that was opened with writing off has nothing to write to.
  ASSERT_TRUE(Run(0));
  EXPECT_FALSE(HasStatus(m_window, "next start"));
  Edit({Tab(pagePlcWrite), "Disable Writing / OK", kAtNextStart});
  ASSERT_TRUE(Stop());
}

TEST_F(ConfigurationSheet, NothingIsAppliedWhileAViewIsBeingConfigured) {
  Open(Configuration(kSimulator));
  ActionOf(m_window, "Trend")->trigger();
  WhileModal([] { Click(TopLevel("Trending"), "Config"); },
             [&](QWidget*) {
               m_window.activateWindow();
               Edit({Tab(pageInput), "Auto Start / OK", [&](QWidget* sheet) {
                       EXPECT_EQ(m_user.boxes.Take().size(), 1u);
                       EXPECT_TRUE(sheet->isVisible());
                     }});
             });
  EXPECT_FALSE(m_window.WantsToStart());
}

TEST_F(ConfigurationSheet, AReplayMayEndMeanwhile) {
  Open(Configuration(kSimulator));
  ASSERT_TRUE(Run(20));
  ASSERT_TRUE(Stop());
  const std::string log = FilesIn(m_dir.Path(), ".rph").at(0);
  Open(R"({"input": {"simulating": 1, "scanPeriod": 10, "inputFiles": [")" + log + R"("]}})");
  ASSERT_TRUE(Run(1));
  Edit({[&](QWidget*) { EXPECT_TRUE(Wait([&] { return HasStatus(m_window, "Stopped"); })); }, Tab(pageInput),
        "Auto Start / OK"});
  EXPECT_TRUE(m_window.WantsToStart());
  ASSERT_TRUE(Run(1));
  ASSERT_TRUE(Stop());
}

void ScaleFirstBy10(QWidget* window) {
  auto* table = Find<QTableView>(window, "Scaler");
  const QModelIndex scale = table->model()->index(0, 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return window->isActiveWindow(); }, 20000));
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(scale).center());
  QTest::keyClicks(QApplication::focusWidget(), "10");
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  QApplication::processEvents();
  EXPECT_EQ(scale.data().toString().toDouble(), 10);
}

// From an empty document to logs, by clicks and keys alone.
TEST_F(ConfigurationSheet, AConfigurationIsBuiltFromNothingAndRuns) {
  const CString logs = m_dir / "logs";
  std::filesystem::create_directory(logs.Std());
  m_user.chooser.path = logs;

  ActionOf(m_window, "New")->trigger();
  Edit({Tab(pageInput),
        "Scan period : / Scan period :=20 / Add net node... / Type of PLC :=Simulator / "
        "Configure PLC / Waveforms=counter,sine / OK / Name :=Kiln / Variable List / "
        "Insert  New Variable / New Variable=n / OK / Insert  New Variable / New Variable=Heat / OK / "
        "OK / Scaler",
        ScaleFirstBy10,
        "OK / OK / Add net node... / Type of PLC :=Simulator / Configure PLC / Station=1 / OK / "
        "Name :=Panel / Variable List / Insert  New Variable / New Variable=Shown / OK / OK / OK / "
        "Preprocess input / Variable List... / ->> / Insert  New Variable / New Variable=Temp / OK / "
        "OK / Preprocessed equations... / Equations=Temp = 850 + 40 * Heat; / OK",
        Tab(pageSmart),
        "Smart Input Variables...",
        Choose({"Temp"}),
        "OK / Smart Output Variables... / Insert  New Variable / New Variable=SetPoint / OK / OK",
        Tab(pageOutput),
        "Add / Name:=All / ... / Path:?" + logs.Std(),
        "Write Logs / Maximum number of logs stored :=100 / Maximum number of samples in a log : =5 / "
        "Variable List...",
        Choose({"n", "Shown", "Temp", "SetPoint"}),
        "OK / Enable Equations...",
        [](QWidget* window) { EXPECT_NE(StateOf(window, "Equations"), ""); },
        "OK / OK",
        Tab(pageSummary),
        "Add / Name:=Hourly / Path:=means / Write Text Files / "
        "Maximum number\nof samples in a\n summary : =5 / "
        "Maximum number\nof summaries\nstored :=100 / Summary Equations... / "
        "Equations=Count = Count + 1; Sum = Sum + Temp; Mean = Sum/Count; / OK / "
        "Enable Equations... / Equations=SampleIsValid = 1; WriteToSummary = 1; / OK / "
        "Variable List...",
        Choose({"n"}),
        "Insert  New Variable / New Variable=Mean / OK / OK / OK",
        Tab(pagePlcWrite),
        "Add  / Type of PLC :=Simulator / Configure PLC / Station=1 / OK / Name :=Panel / "
        "Variable List",
        Choose({"n"}),
        "OK / OK / OK"});

  const json saved = Saved("built.json");
  EXPECT_EQ(saved, Saved("built.vst")) << "the configuration file holds less";
  EXPECT_EQ(saved["input"]["plcNodes"][0]["scaler"][0]["scale"], 10);
  EXPECT_EQ(saved["summaries"][0]["directory"], (m_dir / "means").Std())
      << "a typed folder is taken from where the program was started";

  ASSERT_TRUE(m_window.Open(m_dir / "built.vst"));
  std::filesystem::create_directory((m_dir / "means").Std());
  ASSERT_TRUE(Run(12));
  ASSERT_TRUE(Stop());
  const auto rows = Log(logs);
  ASSERT_EQ(static_cast<int>(rows.size()), Samples(m_window));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const float n = rows[i][0], shown = rows[i][1], temp = rows[i][2];
    EXPECT_EQ(n, 10.0f * static_cast<float>(i + 1)) << "the scaler";
    EXPECT_TRUE(temp >= 810 && temp <= 890) << temp;
    EXPECT_EQ(shown, i == 0 ? 0 : rows[i - 1][0]) << "what was written to the panel";
    EXPECT_EQ(rows[i][3], 0.0f);
  }
  std::string means;
  for (const std::string& path : FilesIn(m_dir / "means", ".csv")) means += ReadBytes(CString(path));
  EXPECT_NE(means.find("TimeStamp,n,Mean,"), std::string::npos) << means;
}

}  // namespace
}  // namespace vastra
