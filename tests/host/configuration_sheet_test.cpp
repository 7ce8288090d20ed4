// The configuration sheet in the desktop, worked by a user who clicks and types.
#include <QDir>
#include <QTabWidget>

#include <nlohmann/json.hpp>

#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"
#include "tests/support/configuration_bytes.h"

namespace vastra {
namespace {

using nlohmann::json;

enum EPage { pageInput, pageOutput, pageSummary, pageSmart, pagePlcWrite };

CStep Tab(EPage page) {
  return [=](QWidget* sheet) { sheet->findChild<QTabWidget*>()->setCurrentIndex(page); };
}

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
  // What the document holds.
  json Saved() {
    m_user.chooser.path = m_dir / "saved.json";
    ActionOf(m_window, "Save As...")->trigger();
    return json::parse(ReadBytes(m_user.chooser.path));
  }
  bool RunsOn(int samples) {
    const int end = Samples(m_window) + samples;
    return Wait([&] { return Samples(m_window) >= end; });
  }
  // The name of the binary log that was written.
  std::string Log() const {
    return QDir(m_dir.Path().Std().c_str()).entryList({"*.rph"}).join("").toStdString();
  }

  CMainWindow m_window;
  CSheetUser m_user;  // expects no other boxes than those in its steps
};

TEST_F(ConfigurationSheet, NothingIsLostByLookingAtEachPage) {
  json full = json::parse(kJson);
  full.merge_patch(json::parse(R"({
"input": {"asFastAsPossible": 1, "preprocess": 1, "preEquationText": "y = y;", "preEquations": ["y = y"]},
"trend": {"equationText": "x = y;", "equations": ["x = y"]}, "plcWrite": {"disableWriting": 1}})"));
  full["variables"] = {{"y", {{"unit", "bar"}, {"comment", "of the boiler"}}}};
  full["plcWrite"]["nodes"][0]["driver"]["value5"] = -5;
  json& nodes = full["input"]["plcNodes"];
  nodes[0]["driver"]["value5"] = -6;
  nodes[0].merge_patch({{"absent", "hold"}, {"aliveVar", "Alive"}});
  nodes[1].merge_patch({{"absent", "fail"}, {"aliveVar", ""}});
  for (const char* logs : {"outputs", "summaries"})
    full[logs][0].merge_patch({{"keepDays", 1.5}, {"keepBytes", 7}, {"minFree", 8}});
  Open(full.dump());
  Edit({Tab(pageOutput), Tab(pageSummary), Tab(pageSmart), Tab(pagePlcWrite), Tab(pageInput), "Apply / OK"});
  EXPECT_FALSE(m_window.isWindowModified());
  EXPECT_EQ(Saved(), full);
}

TEST_F(ConfigurationSheet, CancelLeavesWhatWasNotApplied) {
  Open(Configuration(kSimulator));
  Edit({Tab(pageInput), "Auto Start / Apply", Tab(pagePlcWrite), "Disable Writing / Cancel"});
  EXPECT_EQ(m_user.boxes.Take().size(), 0u) << "the equations of the views read variables of the input";
  EXPECT_TRUE(m_window.WantsToStart());
  EXPECT_TRUE(m_window.isWindowModified());
  EXPECT_EQ(Saved()["plcWrite"]["disableWriting"], 0);
}

constexpr const char* kAtNextStart =
    "!|The logger is running: the changes apply at the next start.\n\nRestart it now?|124";

// What is written to the station is read as p.
TEST_F(ConfigurationSheet, WhileTheLoggerRunsOnlyWritingIsTurnedOffAtOnce) {
  Open(R"({"input": {"scanPeriod": 10, "plcNodes": [
{"nodeName": "N", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]},
{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["p"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = a > p + 2;", "varNames": ["a", "p"], "saveCsv": 1, "directory": "."}],
"plcWrite": {"nodes": [{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["a"]}]}})");
  ASSERT_TRUE(Runs(m_window, 10));
  Edit({Tab(pagePlcWrite), "Disable Writing / Apply / !",
        [&](QWidget*) { EXPECT_FALSE(Says(m_window, "next start")); }, Tab(pageInput), "Auto Start / Apply",
        kAtNextStart, "OK"});
  EXPECT_TRUE(Says(m_window, "Running (changes apply at the next start)"));
  EXPECT_TRUE(m_window.WantsToStart());
  ASSERT_TRUE(RunsOn(40));  // the row shows the samples up to 200 ms late
  ASSERT_TRUE(Stops(m_window));
  EXPECT_GT(Rows(m_dir.Path()), 0u) << "writing goes on";

  // A stage that was opened with writing off has nothing to write to.
  ASSERT_TRUE(Runs(m_window, 0));
  EXPECT_FALSE(Says(m_window, "next start"));
  Edit({Tab(pagePlcWrite), "Disable Writing / OK", kAtNextStart});
  ASSERT_TRUE(Stops(m_window));
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
  ASSERT_TRUE(Runs(m_window, 20));
  ASSERT_TRUE(Stops(m_window));
  Open(R"({"input": {"simulating": 1, "scanPeriod": 10, "inputFiles": [")" + Log() + R"("]}})");
  ASSERT_TRUE(Runs(m_window, 1));
  Edit({[&](QWidget*) { EXPECT_TRUE(Wait([&] { return Says(m_window, "Stopped"); })); }, Tab(pageInput),
        "Auto Start / OK"});
  EXPECT_TRUE(m_window.WantsToStart());
  ASSERT_TRUE(Runs(m_window, 1));
  ASSERT_TRUE(Stops(m_window));
}

TEST_F(ConfigurationSheet, AConfigurationIsBuiltFromNothingByClicksAndKeysAndRuns) {
  ActionOf(m_window, "New")->trigger();
  Edit({Tab(pageInput),
        "Scan period :=20 / Add net node... / Type of PLC :=Simulator / Configure PLC / Waveforms=counter / "
        "OK / Name :=Kiln / Alive variable :=KilnAlive / "
        "Variable List / Insert  New Variable / New Variable=n / OK / OK / OK",
        Tab(pageSmart),
        "Smart Input Variables... / ->> / OK / "
        "Smart Output Variables... / Insert  New Variable / New Variable=SetPoint / OK / OK",
        Tab(pageOutput),
        "Add / Name:=All / Path:=. / Write Logs / Maximum number of logs stored :=9 / Enable Equations... / "
        "OK / Variable List... / ->> / OK / OK",
        Tab(pageSummary),
        "Add / Name:=Hourly / Path:=means / Enable Equations... / OK / "
        "Variable List... / Available Vars#1 / -> / OK / OK",
        Tab(pagePlcWrite),
        "Add  / Type of PLC :=Simulator / Configure PLC / OK / Name :=Panel / "
        "Variable List / ->> / OK / OK / OK"});
  const json saved = Saved();
  const std::pair<const char*, json> fields[] = {
      {"/input/plcNodes/0/driver/text1", "counter"},
      {"/smart/inputVars", {"n", "KilnAlive"}},
      {"/outputs/0/varNames", {"n", "KilnAlive", "SetPoint"}},
      {"/summaries/0/varNames", {"KilnAlive"}},
      {"/summaries/0/directory", (m_dir / "means").Std()},  // where the program was started
      {"/plcWrite/nodes/0/varNames", {"n", "KilnAlive", "SetPoint"}}};
  for (const auto& [field, value] : fields) EXPECT_EQ(saved.at(json::json_pointer(field)), value);
  ASSERT_TRUE(Runs(m_window, 2));
  ASSERT_TRUE(Stops(m_window));
  EXPECT_NE(Log(), "");
}

}  // namespace
}  // namespace vastra
