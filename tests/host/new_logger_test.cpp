// The assistant for a new logger: its rules, and a user who goes from nothing to a row in a log.
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTableWidget>
#include <QTreeWidget>

#include <cmath>
#include <limits>
#include <sstream>

#include "host/common/checks.h"
#include "host/common/configuration_json.h"
#include "host/common/equation_check.h"
#include "host/desktop/new_logger_rules.h"
#include "tests/host/desktop_window.h"
#include "tests/screens/sheet_user.h"
#include "vastra/equations/equator.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr CRegisterUse kRegisters = {true, 0};

// The rows as one text: name, register, type, order, scale.
std::string RowTexts(const std::vector<CVariableRow>& rows) {
  std::string text;
  for (const CVariableRow& row : rows)
    text += (row.name + " " + row.address + " " + row.type + " " + row.order + " " + row.scale + ";").Std();
  return text;
}

// A list of count variables.
std::string LongList(int count) {
  std::string list = "name,register\n";
  for (int i = 0; i < count; ++i) list += "V" + std::to_string(i) + ",h" + std::to_string(i) + "\n";
  return list;
}

TEST(VariableList, MoreVariablesThanThereCanBeAreRefusedOnceAndLoseNothing) {
  CImportedRows found = ImportRows(LongList(2000).c_str(), kRegisters);
  EXPECT_EQ(found.faults, std::vector<CString>());
  std::vector<CVariableRow> rows = found.rows;
  EXPECT_EQ(MergeRows(found.rows, rows), 2000U);
  EXPECT_EQ(MergeRows({{.name = "other"}}, rows), std::nullopt);
  EXPECT_EQ(rows, found.rows);
  found = ImportRows(LongList(5000).c_str(), kRegisters);
  EXPECT_EQ(found.faults, std::vector<CString>{CString("line 2002: ") + kTooMany});
  const auto fault = [](const char* list) {
    CLoggerPlan plan;
    plan.nodeName = "N";
    plan.driver.plcType = kModbusType;
    plan.driver.text2 = list;
    plan.rows = FirstRows(plan, 1);
    return DeviceFault(plan);
  };
  EXPECT_EQ(fault("h0 x 1999, c7"), "");
  EXPECT_EQ(fault("h0 x 1999, c7 x 2"), kTooMany) << "the last register is lost";
}

TEST(VariableList, AListIsImportedOrEachFaultHasItsLine) {
  const std::tuple<const char*, CRegisterUse, const char*, const char*> cases[] = {
      {"Temp,h0,i16,,0.1\nGas,40011,f32,cdab\n", kRegisters, "Temp h0 i16  0.1;Gas 40011 f32 cdab 1;", ""},
      {"\xEF\xBB\xBFUnit;Address;variable;Access;Factor\r\n\"degree; C\";h0;T;rw;0,1\r\n;;;;\r\n", kRegisters,
       "T h0   0,1;", ""},
      {"name\tcomment\na\t\"say \"\"x\"\"\"\n", {}, "a    1;", ""},
      {"a,2\nb,,m\n", {}, "a    2;b    1;", ""},
      {"x 1,h0\nT,z9\nT,h0,u8\nT,h0,u16,abc\nT,h65535,f32\nT,c0,u16\nT,h0,,,0\nT,h0,,,one\nWriteToLog,h0\nT,"
       "00000\nT,h2147483647,f64\n",
       kRegisters, "",
       "line 1: \"x 1\" cannot be used\nline 2: register \"z9\" is not\nline 3: there is no type \"u8\"\n"
       "line 4: there is no order \"abc\"\nline 5: address 65535\nline 6: a bit has no type\n"
       "line 7: a scale of 0\nline 8: scale \"one\" is not\nline 9: \"WriteToLog\" is a name that\n"
       "line 10: register \"00000\"\nline 11: address 2147483647"},
      {"T,h0\nT,h1\n\"U\n", kRegisters, "T h0   1;",
       "line 2: \"T\" is in line 1\nline 3: a quotation mark\n"},
      {"a,1,m,c,d\n", {}, "", "line 1: it has more cells"},
      {"", {}, "", "the list has no variable"},
      {"name,unit\n", {}, "", "the list has no variable"}};
  for (const auto& [list, use, rows, faults] : cases) {
    const CImportedRows found = ImportRows(list, use);
    EXPECT_EQ(RowTexts(found.rows), rows) << list;
    std::istringstream lines(faults);
    for (const CString& fault : found.faults) {
      std::string line = "no more";
      std::getline(lines, line);
      EXPECT_TRUE(fault.Std().starts_with(line)) << fault.Std();
    }
    EXPECT_EQ(lines.peek(), EOF) << list;
  }
  EXPECT_EQ(ImportRows("Unit;Address;variable;Access\nC;h0;T;rw", kRegisters).leftOut,
            std::vector<CString>{"Access"});
}

// The list of the driver and the rows are the same, in both directions, and rows keep their names.
TEST(VariableList, RowsAndTheListOfRegistersAreTheSame) {
  const std::tuple<const char*, int, const char*, const char*> cases[] = {
      {"h0", 0, "h0 h0   1;", "h0"},
      {" H0 x 2 : F32 cdab ,d7", 0, "h0 h0 f32 cdab 1;h2 h2 f32 cdab 1;d7 d7   1;", "h0 x 2: f32 cdab, d7"},
      {"i12: u32, h100x3, c5", 0, "i12 i12 u32  1;h100 h100   1;h101 h101   1;h102 h102   1;c5 c5   1;",
       "i12: u32, h100 x 3, c5"},
      {"h40101", -40001, "h40101 h40101   1;", "h40101"}};
  for (const auto& [list, added, rows, back] : cases) {
    const std::vector<CVariableRow> made = RowsOfRegisters(list, {}, {true, added});
    EXPECT_EQ(RowTexts(made), rows);
    EXPECT_EQ(RegisterList(made, {true, added}), back);
  }
  EXPECT_EQ(
      RowTexts(RowsOfRegisters("h1, h0, h0", {{.name = "A", .address = "40001", .scale = "3"}}, kRegisters)),
      "h1 h1   1;A h0   3;h0 h0   1;");
  EXPECT_EQ(RegisterList({{.name = "A", .address = "40001"}, {.name = "B", .address = "400012"}}, kRegisters),
            "h0, h11");
  EXPECT_EQ(RegisterList({{.name = "A", .address = "40101"}}, {true, -40001}), "h40101");
}

// The summary of some samples, of which those that are NaN are away: mean, min, max, last and their number.
TEST(NewLoggerRules, TheEquationsOfASummaryLeaveOutSamplesOfADeviceThatIsAway) {
  const float away = std::numeric_limits<float>::quiet_NaN();
  const std::pair<std::vector<float>, std::vector<float>> cases[] = {
      {{1, 2, 6, 3}, {3, 1, 6, 3, 4}},
      {{away, 2, 6, away}, {4, 2, 6, 6, 2}},
      {{5, away, away, away}, {5, 5, 5, 5, 1}},
      {{away, away, away, away}, {away, away, away, away, 0}},
      {{1e6F, 1e6F + 1, 1e6F, 1e6F + 1}, {1e6F + 0.5F, 1e6F, 1e6F + 1, 1e6F + 1, 4}}};
  CLoggerPlan plan;
  plan.nodeName = "Kiln 1";
  plan.rows = {{.name = "T"}};
  plan.functions = {0, 1, 2, 3};
  plan.summarySeconds = 4;
  const CConfiguration configuration = ConfigurationOf(plan);
  const CSummaryConfig& summary = *configuration.m_summaries.m_summaries.GetHead();
  CStringArray names;
  names.Add("T");
  names.Add(configuration.m_input.m_plcNodes.GetHead()->m_aliveVar);
  CEquator equations, enable;
  ASSERT_EQ(equations.Compile(names, summary.m_summaryEquations).statement, 0);
  ASSERT_EQ(enable.Compile(names, summary.m_enableEquations).statement, 0);
  CArray<float, float> sample;
  sample.SetSize(2);
  for (const auto& [values, row] : cases) {
    bool isWritten = false;
    for (const float value : values) {
      EXPECT_FALSE(isWritten);
      sample[0] = value;
      sample[1] = std::isnan(value) ? 0.0F : 1.0F;
      enable.Run(sample);
      equations.Run(sample);
      isWritten = enable.GetValue(sample, enable.FindValue("WriteToSummary")) != 0;
    }
    EXPECT_TRUE(isWritten);
    for (std::size_t i = 0; i < row.size(); ++i) {
      const float value =
          equations.GetValue(sample, equations.FindValue(summary.m_varNames[static_cast<int>(i)]));
      EXPECT_TRUE(std::isnan(row[i]) ? std::isnan(value) : value == row[i]) << i << ": " << value;
    }
  }
}

TEST(NewLoggerRules, ABatchEndsWithItsNumberAndNotWhileTheDeviceIsAway) {
  CLoggerPlan plan;
  plan.nodeName = "Line";
  plan.rows = {{.name = "Last"}, {.name = "Seen"}};  // names that the equations would like to have
  plan.logEnd = ELogEnd::batch;
  plan.batchVariable = "Last";
  const CConfiguration configuration = ConfigurationOf(plan);
  const COutputConfig& output = *configuration.m_outputs.m_outputs.GetHead();
  CStringArray names = configuration.m_input.m_plcNodes.GetHead()->m_varNames;
  names.Add("LineAlive");
  CEquator equations;
  ASSERT_EQ(equations.Compile(names, output.m_enableEquations).statement, 0);
  const float away = std::numeric_limits<float>::quiet_NaN();
  const std::tuple<float, int, int> samples[] = {{away, 0, 0}, {7, 0, 1},    {7, 0, 1},
                                                 {8, 1, 1},    {away, 0, 0}, {8, 0, 1},
                                                 {9, 1, 1},    {away, 0, 0}, {3, 1, 1}};
  CArray<float, float> sample;
  sample.SetSize(3);
  for (const auto& [batch, restart, write] : samples) {
    sample[0] = batch;
    sample[2] = std::isnan(batch) ? 0.0F : 1.0F;
    equations.Run(sample);
    EXPECT_EQ(equations.GetValue(sample, equations.FindValue("RestartLog")), restart) << batch;
    EXPECT_EQ(equations.GetValue(sample, equations.FindValue("WriteToLog")), write) << batch;
  }
}

TEST(NewLoggerRules, EachPageRefusesWhatCannotRun) {
  CLoggerPlan good;
  good.nodeName = "N";
  good.rows = {{.name = "a"}};
  good.path = "/none/x.json";
  using CChange = std::function<void(CLoggerPlan&)>;
  using CFault = CString (*)(const CLoggerPlan&);
  const std::tuple<CFault, CChange, const char*> cases[] = {
      {DeviceFault, [](CLoggerPlan& plan) { plan.nodeName = ""; }, "The device needs"},
      {LogsFault, [](CLoggerPlan& plan) { plan.logFolder = ""; }, "The logs need"},
      {LogsFault, [](CLoggerPlan& plan) { plan.saveRp = plan.saveCsv = false; }, "Choose binary"},
      {LogsFault, [](CLoggerPlan& plan) { plan.logEnd = ELogEnd::batch; }, "Choose the variable"},
      {LogsFault, [](CLoggerPlan& plan) { plan.scanPeriod = 1; }, "A log can have 86400000 samples"},
      {LogsFault, [](CLoggerPlan& plan) { plan.scanPeriod = 1, plan.logEnd = ELogEnd::hour; }, ""},
      {SummaryFault, [](CLoggerPlan& plan) { plan.functions.clear(); }, "Choose at least one f"},
      {SummaryFault, [](CLoggerPlan& plan) { plan.leftOut.emplace("a"); }, "Choose at least one v"},
      {SummaryFault, [](CLoggerPlan& plan) { plan.leftOut.emplace("a"), plan.summarises = false; }, ""},
      {SummaryFault, [](CLoggerPlan& plan) { plan.summaryFolder = "./logs"; },
       "The summary needs a folder of"},
      {SummaryFault, [](CLoggerPlan& plan) { plan.scanPeriod = 60001; }, "A row of the summary needs"},
      {SummaryFault, [](CLoggerPlan& plan) { plan.scanPeriod = 1, plan.summarySeconds = 86400; },
       "A row of the summary would"},
      {PathFault, [](CLoggerPlan& plan) { plan.path = "/x.vst"; }, "The file of the configuration ends"},
      {PathFault, [](CLoggerPlan& plan) { plan.path = ""; }, "The configuration needs"}};
  for (const CFault fault : {DeviceFault, LogsFault, SummaryFault, PathFault}) EXPECT_EQ(fault(good), "");
  for (const auto& [fault, change, expected] : cases) {
    CLoggerPlan plan = good;
    change(plan);
    const std::string found = fault(plan).Std();
    EXPECT_EQ(*expected ? found.substr(0, std::string(expected).size()) : found, expected) << found;
  }
}

class NewLoggerFile : public CLoggerTest {};

// Names that the equations would like to have, a scale, notes, each end of a log: a check has nothing to say.
TEST_F(NewLoggerFile, WhatIsWrittenPassesTheCheckAndIsNotReplaced) {
  for (const ELogEnd end : {ELogEnd::hour, ELogEnd::day, ELogEnd::batch}) {
    CLoggerPlan plan;
    plan.driver.plcType = kSimulatorType;
    plan.nodeName = "K\xC3\xA4ln 1";
    plan.rows = {{.name = "Step", .scale = "0,5", .unit = "m; =", .comment = "a \"b\""},
                 {.name = "Tick"},
                 {.name = "Step_Mean"},
                 {.name = "Samples"},
                 {.name = "Kln1Alive"}};
    plan.logEnd = end;
    plan.batchVariable = "Tick";
    plan.functions = {0, 1, 2, 3};
    plan.path = m_dir / CString("new/" + std::to_string(static_cast<int>(end)) + "/x.json");
    ASSERT_EQ(WriteLogger(plan), "");
    EXPECT_EQ(WriteLogger(plan).Find(plan.path + ": "), 0) << "replaced";
    CConfiguration read, made = ConfigurationOf(plan);
    ASSERT_EQ(LoadConfiguration(plan.path, read), "");
    EXPECT_TRUE(IsSame(read, made));
    EXPECT_EQ(read.m_variables["Step_Max"].m_unit, "m; =");
    const CStageNames names = FindStageNames(read);
    for (const CFinding& finding : CheckConfiguration(read, GivenNames(read, names), {}))
      ADD_FAILURE() << finding.Line();
    for (const CEquationFinding& fault : FindEquationFaults(read, names)) ADD_FAILURE() << fault.Line();
    EXPECT_NE(DescribeLogger(plan).Find("Step_Mean2 = "), -1);
  }
}

class NewLogger : public Desktop {
 protected:
  NewLogger() { ::setenv("HOME", m_dir.Path(), 1); }

  // Follows steps in the assistant.
  int Assist(const CSteps& steps) {
    return m_user.Run([&] { return ActionOf(m_window, "New Logger...")->trigger(), 1; }, steps);
  }
  // Types into cells of the table: row, column and text.
  static CStep Cells(const std::vector<std::tuple<int, int, const char*>>& cells) {
    return [=](QWidget* window) {
      const auto* table = Find<QTableWidget>(window, "Variables");
      for (const auto& [row, column, text] : cells) table->item(row, column)->setText(text);
    };
  }
  // The result of the test has the text.
  CStep Shows(const char* report, const char* text) {
    return [=](QWidget* window) {
      const auto* result = Find<QPlainTextEdit>(window, report);
      EXPECT_TRUE(Wait([&] { return result->toPlainText().contains(text); }))
          << result->toPlainText().toStdString();
    };
  }

  CMainWindow m_window;
  CSheetUser m_user;
};

TEST_F(NewLogger, FromNothingToARowInALog) {
  m_window.show();
  const CString path = m_dir / "vastra/Kiln/Kiln.json";
  const CStep keys = [](QWidget* window) { EXPECT_EQ(RepeatedKeys(*window), ""); };
  const CStep live = [](QWidget* window) {
    const auto* table = Find<QTableWidget>(window, "Variables");
    EXPECT_TRUE(Wait([&] { return table->item(2, 7)->text().toInt() > 1; })) << "raw values";
  };
  const CStep period = [](QWidget* window) { Find<QSpinBox>(window, "Scan period")->setValue(20); };
  Assist({keys,
          "&Test",
          Shows("Result", "Value3 = "),
          "Name=Kiln / &Next >",
          keys,
          Cells({{0, 0, "Heat"}, {0, 4, "40"}, {0, 5, "K"}, {1, 0, "my var"}}),
          "&Next >",
          "!Row 2: \"my var\" cannot be used in equations: a name has letters (A to Z, a to z), digits and "
          "single underscores, a letter first, and is not a word of the language",
          Cells({{1, 0, "Draft"}, {2, 0, "Items"}}),
          "&Live Values",
          live,
          "&Next >",
          keys,
          period,
          "A log=each hour / &Next >",
          keys,
          "&Next >",
          keys,
          "&Write",
          keys,
          Shows("Written", (path + "\n").Std().c_str()),
          Shows("Written", "Heat_Mean = "),
          "Open the &equation editor / &Finish"});
  ASSERT_TRUE(Wait([&] { return Says(m_window, "Running"); }));
  EXPECT_FALSE(TopLevel("Check"));
  EXPECT_TRUE(TopLevel("Equation Editor"));
  EXPECT_EQ(Title(m_window), path.Std() + "[*] - Vastra");
  ASSERT_TRUE(Wait([&] { return Samples(m_window) > 3; }));
  ASSERT_TRUE(Stops(m_window));
  EXPECT_GT(Rows(m_dir / "vastra/Kiln/logs"), 0U);
  ActionOf(m_window, "Check")->trigger();
  EXPECT_EQ(Find<QTreeWidget>(TopLevel("Check"), "Findings")->topLevelItemCount(), 0);
}

TEST_F(NewLogger, ADeviceThatFailsAndOneThatHangsKeepNobody) {
  m_window.show();
  const CStep two = [](QWidget* window) { Find<QSpinBox>(window, "Number of values")->setValue(2); };
  Assist({"&Test", Shows("Result", "Value1 = "), "Device=Slow", Shows("Result", "")});
  for (const auto& [fault, words] :
       {std::pair("gives a status of Read", "was not read: no reply in time"), std::pair("", "Read in ")}) {
    ::setenv("FAULT", fault, 1);
    Assist({"Device=Slow", two, "&Test", Shows("Result", words)});
  }
  ::setenv("FAULT", "hangs", 1);
  Assist({"Device=Slow", two, "&Test", Shows("Result", "Reading..."), "S&top", Shows("Result", "Stopped."),
          "&Test", Shows("Result", "has not returned"), "&Next >", "Cancel"});
  ::unsetenv("FAULT");
}

TEST_F(NewLogger, AListIsImportedWholeOrNotAtAll) {
  m_window.show();
  WriteBytes(m_dir / "bad.csv", "name,scale\nA,1\nB,x\n");
  WriteBytes(m_dir / "good.csv", "name,scale,unit\nA,2,K\nB,,\n");
  WriteBytes(m_dir / "again.csv", "name,unit\nC,\nA,degC\n");
  WriteBytes(m_dir / "long.csv", LongList(1998));
  const auto choose = [&](const char* file) {
    return [this, file](QWidget*) { m_user.chooser.path = m_dir / file; };
  };
  Assist({"&Next >", choose("bad.csv"), "&Import...",
          "!" + (m_dir / "bad.csv").Std() + ": nothing was imported.\nline 3: scale \"x\" is not a number",
          choose("good.csv"), "&Import...",
          [](QWidget* window) {
            const auto* table = Find<QTableWidget>(window, "Variables");
            ASSERT_EQ(table->rowCount(), 2);
            EXPECT_EQ(table->item(0, 5)->text(), "K");
          },
          "< &Back", "&Next >", choose("again.csv"), "&Import...",
          [](QWidget* window) {
            const auto* table = Find<QTableWidget>(window, "Variables");
            ASSERT_EQ(table->rowCount(), 3) << "a list that is imported again is there twice";
            EXPECT_EQ(table->item(0, 5)->text() + table->item(2, 0)->text(), "degCC");
          },
          choose("long.csv"), "&Import...",
          "!" + (m_dir / "long.csv").Std() +
              ": nothing was imported.\nThe assistant has 2000 variables at most.",
          "&Next >", "Cancel"});
}

}  // namespace
}  // namespace vastra
