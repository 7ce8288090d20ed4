// The configuration sheet in the desktop, worked by a user who clicks and types.
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>

#include <nlohmann/json.hpp>
#include <set>

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"
#include "tests/host/desktop_window.h"
#include "tests/support/configuration_bytes.h"
#include "vastra/stages/log_input.h"

namespace vastra {
namespace {

using nlohmann::json;
using CUser = std::function<void(QWidget*)>;

enum EPage { pageInput, pageOutput, pageSummary, pageSmart, pagePlcWrite };

// Clicks what opens a dialog, and lets user work in that.
void In(QWidget* window, const char* caption, const CUser& user) {
  WhileModal([&] { Click(window, caption); }, user);
}

// The same; user is done with OK.
void Ok(QWidget* window, const char* caption, const CUser& user) {
  In(window, caption, [&](QWidget* dialog) {
    user(dialog);
    Click(dialog, "OK");
  });
}

// The page, brought to the front.
QWidget* Page(QWidget* sheet, EPage page) {
  auto* tabs = sheet->findChild<QTabWidget*>();
  tabs->setCurrentIndex(page);
  return tabs->currentWidget();
}

// A box or a radio button, by its mark: it may be wider than what can be clicked.
void Check(QWidget* window, const char* caption) {
  auto* box = Find<QAbstractButton>(window, caption);
  QTest::mouseClick(box, Qt::LeftButton, {}, {8, box->height() / 2});
}

void Type(QWidget* window, const char* field, const char* text) {
  auto* edit = Find<QLineEdit>(window, field);
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

void Write(QWidget* dialog, const char* equations) {
  auto* edit = Find<QPlainTextEdit>(dialog, "Equations");
  edit->selectAll();
  QTest::keyClicks(edit, equations);
}

// Marks the entries in the list of what there is, and takes them.
void Choose(QWidget* dialog, const std::vector<const char*>& names) {
  auto* list = Find<QListWidget>(dialog, "Available Vars");
  for (const char* name : names)
    for (QListWidgetItem* item : list->findItems(name, Qt::MatchExactly)) item->setSelected(true);
  Click(dialog, "->");
}

void Insert(QWidget* dialog, const std::vector<const char*>& names) {
  for (const char* name : names)
    Ok(dialog, "Insert  New Variable", [&](QWidget* window) { Type(window, "New Variable", name); });
}

// The samples of the binary logs in folder, in the order of their variables.
std::vector<std::vector<float>> Log(const CString& folder) {
  std::set<std::string> paths;  // logs of the same second are played in the order of the list
  for (const auto& entry : std::filesystem::directory_iterator(folder.Std()))
    if (entry.path().extension() == ".rph") paths.insert(entry.path().string());
  CLogInput replay;
  replay.GetOptions()->m_simulating = 1;
  for (const std::string& path : paths) replay.GetOptions()->m_inputFiles.AddTail(CString(path));
  std::vector<std::vector<float>> rows;
  CLogSample sample;
  EXPECT_TRUE(replay.Open());
  while (replay.Read(sample)) rows.emplace_back(sample.m_values.begin(), sample.m_values.end());
  return rows;
}

// As long as it lives, the program has been started in folder.
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
  // Opens the sheet and closes it, by Cancel if user has not.
  void Edit(const CUser& user) {
    WhileModal([&] { ActionOf(m_window, "Configuration...")->trigger(); }, user);
  }
  // What the document holds, saved at name.
  json Saved(const char* name = "saved.json") {
    m_chooser.path = m_dir / name;
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
  CTestPrompter m_boxes;
  CTestChooser m_chooser;
};

TEST_F(ConfigurationSheet, NothingIsLostByLookingAtEachPage) {
  json full = json::parse(kJson);
  full["input"]["asFastAsPossible"] = full["input"]["preprocess"] = 1;
  full["input"]["preEquationText"] = "y = y;";
  full["input"]["preEquations"] = {"y = y"};
  full["trend"]["equationText"] = "x = y;";
  full["trend"]["equations"] = {"x = y"};
  full["plcWrite"]["disableWriting"] = 1;
  full["plcWrite"]["nodes"][0]["driver"]["value5"] = -5;
  full["input"]["plcNodes"][0]["driver"]["value5"] = -6;
  Open(full.dump());
  Edit([](QWidget* sheet) {
    for (const EPage page : {pageOutput, pageSummary, pageSmart, pagePlcWrite, pageInput}) Page(sheet, page);
    Click(sheet, "Apply");
    Click(sheet, "OK");
  });
  EXPECT_FALSE(m_window.isWindowModified());
  EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{});
  EXPECT_EQ(Saved(), full);
}

TEST_F(ConfigurationSheet, APageThatRefusesStaysInFrontAndNothingIsApplied) {
  ActionOf(m_window, "New")->trigger();
  Edit([&](QWidget* sheet) {
    const char* kClicks[] = {"OK", "Apply"};
    for (const char* button : kClicks) {
      Click(sheet, button);
      ASSERT_EQ(m_boxes.asked.size(), 1u) << button;
      EXPECT_NE(m_boxes.Take()[0].find("select one net node at least"), std::string::npos);
    }
    Page(sheet, pageOutput);
    EXPECT_EQ(m_boxes.Take().size(), 1u);
    EXPECT_EQ(sheet->findChild<QTabWidget*>()->currentIndex(), pageInput);
    EXPECT_TRUE(sheet->isVisible());
  });
  EXPECT_FALSE(m_window.isWindowModified());
}

TEST_F(ConfigurationSheet, CancelLeavesWhatWasNotApplied) {
  Open(Configuration(kSimulator));
  m_boxes.answer = IDYES;  // the equations of the views read variables that nothing preprocesses
  Edit([](QWidget* sheet) {
    Check(Page(sheet, pageInput), "Auto Start");
    Click(sheet, "Apply");
    Check(Page(sheet, pagePlcWrite), "Disable Writing");
    Click(sheet, "Cancel");
  });
  EXPECT_TRUE(m_window.WantsToStart());
  EXPECT_TRUE(m_window.isWindowModified());
  EXPECT_EQ(m_boxes.Take().size(), 1u);
  const json saved = Saved();
  EXPECT_EQ(saved["plcWrite"]["disableWriting"], 0);
  EXPECT_EQ(saved["trend"]["equations"], json::array()) << "erased in the stages alone";
}

// What is written to the station comes back in p.
TEST_F(ConfigurationSheet, WhileTheLoggerRunsOnlyWritingIsTurnedOffAtOnce) {
  Open(R"({"input": {"scanPeriod": 10, "plcNodes": [
{"nodeName": "N", "driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["a"]},
{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["p"]}]},
"outputs": [{"name": "All", "enableText": "WriteToLog = 1;", "varNames": ["a", "p"], "saveRp": 1, "directory": "."}],
"plcWrite": {"nodes": [{"nodeName": "P", "driver": {"plcType": 9001, "station": 1}, "varNames": ["a"]}]}})");
  ASSERT_TRUE(Run(10));
  Edit([&](QWidget* sheet) {
    Check(Page(sheet, pagePlcWrite), "Disable Writing");
    Click(sheet, "Apply");
    EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{});
    EXPECT_FALSE(HasStatus(m_window, "next start"));
    Check(Page(sheet, pageInput), "Auto Start");
    Click(sheet, "Apply");
    EXPECT_EQ(m_boxes.Take().size(), 1u);
    Click(sheet, "OK");
    EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{}) << "told again, and nothing has changed";
  });
  EXPECT_TRUE(HasStatus(m_window, "Running (changes apply at the next start)"));
  EXPECT_TRUE(m_window.WantsToStart());
  ASSERT_TRUE(RunsOn(10));
  ASSERT_TRUE(Stop());
  const auto rows = Log(m_dir.Path());
  ASSERT_GT(rows.size(), 10u);
  EXPECT_GT(rows.back()[0], rows.back()[1] + 2) << "goes on writing";

  // Opened with writing off, the stage has nothing to write to.
  ASSERT_TRUE(Run(0));
  EXPECT_FALSE(HasStatus(m_window, "next start"));
  Edit([&](QWidget* sheet) {
    Check(Page(sheet, pagePlcWrite), "Disable Writing");
    Click(sheet, "OK");
  });
  EXPECT_EQ(m_boxes.Take(),
            std::vector<std::string>{"|The logger is running: the changes apply at the next start.|00"});
  ASSERT_TRUE(Stop());
}

TEST_F(ConfigurationSheet, NothingIsAppliedWhileAViewIsBeingConfigured) {
  Open(Configuration(kSimulator));
  ActionOf(m_window, "Trend")->trigger();
  In(TopLevel("Trending"), "Config", [&](QWidget*) {
    m_window.activateWindow();
    Edit([&](QWidget* sheet) {
      Check(Page(sheet, pageInput), "Auto Start");
      Click(sheet, "OK");
      EXPECT_EQ(m_boxes.Take().size(), 1u);
      EXPECT_TRUE(sheet->isVisible());
    });
  });
  EXPECT_FALSE(m_window.WantsToStart());
}

TEST_F(ConfigurationSheet, AReplayMayEndMeanwhile) {
  Open(Configuration(kSimulator));
  ASSERT_TRUE(Run(20));
  ASSERT_TRUE(Stop());
  std::string log;
  for (const auto& entry : std::filesystem::directory_iterator(m_dir.Path().Std()))
    if (entry.path().extension() == ".rph") log = entry.path().string();
  Open(R"({"input": {"simulating": 1, "scanPeriod": 10, "inputFiles": [")" + log + R"("]}})");
  ASSERT_TRUE(Run(1));
  Edit([&](QWidget* sheet) {
    EXPECT_TRUE(Wait([&] { return HasStatus(m_window, "Stopped"); }));
    Check(Page(sheet, pageInput), "Auto Start");
    Click(sheet, "OK");
  });
  EXPECT_TRUE(m_window.WantsToStart());
  EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{}) << "nothing runs any more";
  ASSERT_TRUE(Run(1));
  ASSERT_TRUE(Stop());
}

// From an empty document to logs, by clicks and keys alone.
TEST_F(ConfigurationSheet, AConfigurationIsBuiltFromNothingAndRuns) {
  const CString logs = m_dir / "logs";
  std::filesystem::create_directory(logs.Std());
  const auto simulate = [](QWidget* node, const char* field, const char* value) {
    auto* types = Find<QComboBox>(node, "Type of PLC :");
    types->setCurrentIndex(types->findText("Simulator", Qt::MatchContains));
    Ok(node, "Configure PLC", [&](QWidget* form) { Type(form, field, value); });
  };
  const auto list = [](QWidget* dialog, const char* button, const std::vector<const char*>& names) {
    Ok(dialog, button, [&](QWidget* window) { Choose(window, names); });
  };
  const auto write = [](QWidget* dialog, const char* button, const char* equations) {
    Ok(dialog, button, [&](QWidget* window) { Write(window, equations); });
  };

  ActionOf(m_window, "New")->trigger();
  Edit([&](QWidget* sheet) {
    QWidget* page = Page(sheet, pageInput);
    Check(page, "Scan period :");
    Type(page, "Scan period :", "20");
    Ok(page, "Add net node...", [&](QWidget* node) {
      simulate(node, "Waveforms", "counter,sine");
      Type(node, "Name :", "Kiln");
      Ok(node, "Variable List", [](QWidget* window) { Insert(window, {"n", "Heat"}); });
      Ok(node, "Scaler", [](QWidget* window) {
        auto* table = Find<QTableView>(window, "Scaler");
        const QModelIndex scale = table->model()->index(0, 1);
        EXPECT_TRUE(Wait([&] { return window->isActiveWindow(); }));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(scale).center());
        QTest::keyClicks(QApplication::focusWidget(), "10");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QApplication::processEvents();
        EXPECT_EQ(scale.data().toString().toDouble(), 10);
      });
    });
    Ok(page, "Add net node...", [&](QWidget* node) {
      simulate(node, "Station", "1");
      Type(node, "Name :", "Panel");
      Ok(node, "Variable List", [](QWidget* window) { Insert(window, {"Shown"}); });
    });
    Check(page, "Preprocess input");
    Ok(page, "Variable List...", [](QWidget* window) {
      Click(window, "->>");
      Insert(window, {"Temp"});
    });
    write(page, "Preprocessed equations...", "Temp = 850 + 40 * Heat;");

    page = Page(sheet, pageSmart);
    list(page, "Smart Input Variables...", {"Temp"});
    Ok(page, "Smart Output Variables...", [](QWidget* window) { Insert(window, {"SetPoint"}); });

    page = Page(sheet, pageOutput);
    Ok(page, "Add", [&](QWidget* output) {
      Type(output, "Name:", "All");
      m_chooser.path = logs;
      Click(output, "...");
      EXPECT_EQ(Find<QLineEdit>(output, "Path:")->text(), ToScreen(logs));
      Check(output, "Write Logs");
      Type(output, "Maximum number of logs stored :", "100");
      Type(output, "Maximum number of samples in a log : ", "5");
      list(output, "Variable List...", {"n", "Shown", "Temp", "SetPoint"});
      Ok(output, "Enable Equations...", [](QWidget* window) {
        EXPECT_FALSE(Find<QPlainTextEdit>(window, "Equations")->toPlainText().isEmpty());
      });
    });
    page = Page(sheet, pageSummary);
    Ok(page, "Add", [&](QWidget* summary) {
      Type(summary, "Name:", "Hourly");
      Type(summary, "Path:", "means");
      Check(summary, "Write Text Files");
      Type(summary, "Maximum number\nof samples in a\n summary : ", "5");
      Type(summary, "Maximum number\nof summaries\nstored :", "100");
      write(summary, "Summary Equations...", "Count = Count + 1; Sum = Sum + Temp; Mean = Sum / Count;");
      write(summary, "Enable Equations...", "SampleIsValid = 1; WriteToSummary = 1;");
      Ok(summary, "Variable List...", [](QWidget* window) {
        Choose(window, {"n"});
        Insert(window, {"Mean"});
      });
    });
    page = Page(sheet, pagePlcWrite);
    Ok(page, "Add ", [&](QWidget* node) {
      simulate(node, "Station", "1");
      Type(node, "Name :", "Panel");
      list(node, "Variable List", {"n"});
    });
    Click(sheet, "OK");
  });
  EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{});

  const json saved = Saved("built.json");
  EXPECT_EQ(saved, Saved("built.vst")) << "the configuration file holds less";
  EXPECT_EQ(saved["input"]["plcNodes"][0]["scaler"][0]["scale"], 10);
  EXPECT_EQ(saved["summaries"][0]["directory"], (m_dir / "means").Std())
      << "a typed folder is taken from where the program was started";
  EXPECT_EQ(m_boxes.Take(), std::vector<std::string>{});

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
  for (const auto& entry : std::filesystem::directory_iterator((m_dir / "means").Std()))
    means += ReadBytes(CString(entry.path().string()));
  EXPECT_NE(means.find("TimeStamp,n,Mean,"), std::string::npos) << means;
}

}  // namespace
}  // namespace vastra
