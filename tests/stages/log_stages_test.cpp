// Outputs and summaries: which samples become rows of which log, and what a listener gets of their logs.
#include <optional>

#include "tests/stages/samples.h"
#include "vastra/logfiles/log_listener.h"
#include "vastra/stages/log_multi_output.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

class LogOutput : public CStageFixture<CLogMultiOutput> {
 protected:
  COutputConfig& Add(const char* equations, const char* directory = "0") {
    COutputConfig& output = CStageFixture::Add(Options().m_outputs, equations, directory);
    output.m_nameVariable = "System Time";
    return output;
  }
};

TEST_F(LogOutput, TheFlagsDecideWhichSamplesGoIntoWhichLog) {
  constexpr std::pair<const char*, const char*> kLogs[] = {
      {"WriteToLog = 0.9", ""},
      {"WriteToLog = -1", "00: 1 2 3|"},
      {"WriteToLog = x > 1", "00: 2 3|"},
      {"SampleIsValid = 0;WriteToLog = 1", "00: 1 2 3|"},
      {"WriteToLog = 1;RestartLog = x == 3", "00: 1 2|01: 3|"},
      {"RestartLog = 1", ""},
      {"n = n + 1;WriteToLog = n == 2", "00: 2|"},
  };
  int count = 0;
  for (const auto& row : kLogs) Add(row.first, std::to_string(count++).c_str());
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(WriteThree(), "111");
  m_stage.Close();
  while (count-- > 0) EXPECT_EQ(Logs(std::to_string(count)), kLogs[count].second) << kLogs[count].first;
}

TEST_F(LogOutput, RepeatedNamesKeepTheirValuesUnlessTheLogHasOtherNames) {
  Add("WriteToLog = 1", "0").m_varNames = Split("a b b");
  Add("WriteToLog = 1", "1").m_varNames = Split("b a C");
  ASSERT_EQ(Open("a b b"), 1);
  EXPECT_EQ(Write({1, 2, 3}), 1);
  m_stage.Close();
  EXPECT_EQ(Logs("0 1"), "00: 1/2/3|00: 2/1/0|");
}

TEST_F(LogOutput, AFailingOutputHidesTheSampleFromLaterOutputsAndTheStageContinues) {
  COutputConfig& without = Add("WriteToLog = 1");
  without.m_saveCsv = 0;
  without.m_directory = "/nowhere";
  for (const char* directory : {"0", "1", "2"}) Add("WriteToLog = 1", directory).m_maxSamples = 1;
  ASSERT_EQ(Open(), 1);
  std::filesystem::remove((m_dir / "1").Std());
  EXPECT_EQ(Write({1}), 0);
  std::filesystem::create_directory((m_dir / "1").Std());
  EXPECT_EQ(Write({2}), 1);
  EXPECT_EQ(Logs("0 1 2"), "00: 1|01: 2|01: 2|00: 2|");
}

TEST_F(LogOutput, OpeningAgainFlushesTheLastLogAndAFailedOpenLeavesNoOutput) {
  Add("WriteToLog = 1");
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(Write({1}), 1);
  Add("WriteToLog = 1").m_nameVariable = "y";
  EXPECT_EQ(Open(), 0);
  EXPECT_EQ(Logs(), "00: 1|");
  EXPECT_TRUE(
      m_recorder.TakeFaults().ends_with("Flush Warning OutputFileLink Tried to flush an empty log.\n"));
  EXPECT_EQ(Write({1}) + m_stage.Restart(), 0);
}

constexpr const char* kAlways = "SampleIsValid = 1;WriteToSummary = 1";

class Summary : public CStageFixture<CLogMultiSummary> {
 protected:
  // A summary of x that counts the samples and adds them up.
  CSummaryConfig& Add(const char* enable, const char* directory = "0") {
    CSummaryConfig& config = CStageFixture::Add(Options().m_summaries, enable, directory);
    config.m_summaryEquations = Split("n = n + 1;sum = sum + x", ';');
    config.m_varNames = Split("n sum");
    return config;
  }
};

TEST_F(Summary, TheFlagsDecideWhatTheEquationsSeeAndWhatBecomesARow) {
  constexpr struct {
    const char *directory, *enable, *results, *logs;
    UINT maxSamples = 4000, maxSummaries = 400;
  } kCases[] = {
      {"0", "WriteToSummary = 1", "000", ""},
      {"1", "SampleIsValid = 1;WriteToSummary = x == 3", "111", "00: 3/6|"},
      {"2", "SampleIsValid = x != 2;WriteToSummary = 1", "101", "00: 1/1 2/4|"},
      {"3", "SampleIsValid = 1;WriteToSummary = x != 2;RestartSummary = x == 2", "111", "00: 1/1|01: 3/6|"},
      {"4", kAlways, "111", "01: 2/3|02: 3/6|", 1, 2},
  };
  for (const auto& row : kCases) {
    CSummaryConfig& config = Add(row.enable, row.directory);
    config.m_maxSamples = row.maxSamples;
    config.m_maxSummaries = row.maxSummaries;
    ASSERT_EQ(Open(), 1);
    EXPECT_EQ(WriteThree(), row.results) << row.enable;
    EXPECT_EQ(Logs(row.directory), row.logs) << row.enable;
    m_stage.ClearConfiguration();
  }
}

TEST_F(Summary, ASampleThatOneSummaryFindsInvalidIsWithheldFromLaterOnes) {
  Add(kAlways, "0");
  Add("SampleIsValid = x != 2;WriteToSummary = 1", "1");
  CSummaryConfig& without = Add("SampleIsValid = x != 3");
  without.m_saveCsv = 0;
  without.m_directory = "/nowhere";
  without.m_summaryEquations = Split("no equation", ';');
  Add(kAlways, "3");
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(WriteThree(), "100");
  EXPECT_EQ(Logs("0 1 3"), "00: 1/1 2/3 3/6|00: 1/1 2/4|00: 1/1|");
}

TEST_F(Summary, ARestartComesFirstAndKeepsTheCountsAndAnOpenStartsThemAtZero) {
  Add("SampleIsValid = 1;WriteToSummary = 1;RestartSummary = x == 2");
  EXPECT_EQ(m_stage.Restart(), 0);
  ASSERT_EQ(Open(), 1);
  Write({5});
  m_recorder.Take();
  Write({2});
  const std::string trace = m_recorder.Take();
  EXPECT_LT(trace.find("Flush Begin SummaryArchiveFileLink"), trace.find("Write Begin SummaryEquatorLink"));
  ASSERT_EQ(Open(), 1);
  Write({7}, kStart + 3600);
  EXPECT_EQ(Logs(), "00: 1/5|01: 2/7|00: 1/7|");
}

TEST_F(Summary, AFailingSummaryHidesTheSampleFromLaterOnesAndKeepsItsRows) {
  Add(kAlways, "0").m_saveRp = 1;
  Add(kAlways, "1");
  ASSERT_EQ(Open(), 1);
  std::filesystem::remove((m_dir / "0").Std());
  EXPECT_EQ(Write({1}), 0);
  std::filesystem::create_directory((m_dir / "0").Std());
  EXPECT_EQ(Write({2}, kStart + 3600), 1);
  EXPECT_EQ(Logs("0 1"), "00: 1/1 2/3|00: 1/2|");
  EXPECT_TRUE(FileExists(m_dir / "0/0301021400.rpd"));
}

// One line for each event; times count from kStart.
class CEvents : public CLogListener {
 public:
  void LogClosed(const CSavedLog& log) override { Add("closed", log); }
  void LogGrew(const CSavedLog& log) override { Add("grew", log); }
  void LogNotSaved(const CUnsavedLog& log) override {
    Begin("not saved", log) << (log.leftShortFile ? " short: " : ": ") << log.reason.Std() << "\n";
  }
  std::string Take() { return std::exchange(m_lines, std::ostringstream()).str(); }

 private:
  std::ostream& Begin(const char* event, const auto& log) {
    const std::string name = std::filesystem::path(log.path.Std()).filename().string();
    return m_lines << log.log << " " << event << " " << name << " " << log.samples;
  }
  void Add(const char* event, const CSavedLog& log) {
    Begin(event, log) << " " << log.first.time - kStart << ".." << log.last.time - kStart << "\n";
    EXPECT_EQ(log.bytes, std::filesystem::file_size(log.path.Std()));
  }
  std::ostringstream m_lines;
};

TEST_F(LogOutput, AListenerGetsAnEventForEachFileThatTheSettingsMake) {
  CEvents events;
  m_stage.SetLogListener(&events);
  for (const char* prefix : {"a", "b"}) {
    COutputConfig& output = Add("WriteToLog = 1");
    output.m_varNames = Split("x y");
    output.m_nameVariable = "x";
    output.m_prefix = prefix, output.m_usePrefix = 1;
    output.m_maxSamples = 2, output.m_saveRp = *prefix == 'b';
    output.m_dwordName = output.m_maxLogs = 1;
  }
  ASSERT_EQ(Open("x y"), 1);
  Write({1, 7});
  EXPECT_EQ(events.Take(), "");
  Write({1, 7}, kStart + 5);
  EXPECT_EQ(events.Take(), "0 closed a17h.csv 2 0..5\n1 closed b17.rph 2 0..5\n1 closed b17h.csv 2 0..5\n");
  Write({2, 7}), Write({2, 7});
  EXPECT_EQ(Files("0"), " a27h.csv b27.rph b27h.csv");
  events.Take();
  for (const std::string left : {"", " short"}) {  // a failed write leaves a new file short, an old one whole
    ASSERT_EQ(Open("x y"), 1);
    Write({2, 7});
    std::optional<CFileSizeLimit> limit(10);
    m_stage.Close();
    limit.reset();
    EXPECT_EQ(events.Take(), "0 not saved a27h.csv 1" + left + ": File too large\n1 not saved b27.rph 1" +
                                 left + ": File too large\n");
    std::filesystem::remove_all((m_dir / "0").Std());
    std::filesystem::create_directory((m_dir / "0").Std());
  }
}

TEST_F(Summary, AListenerGetsAnEventForEachRowAndForTheEnd) {
  CEvents events;
  m_stage.SetLogListener(&events);
  Add(kAlways);
  ASSERT_EQ(Open(), 1);
  Write({1});
  Write({1}, kStart + 5);
  m_stage.Restart();
  EXPECT_EQ(
      events.Take(),
      "0 grew 0301021400d.csv 1 0..0\n0 grew 0301021400d.csv 2 0..5\n0 closed 0301021400d.csv 2 0..5\n");
  std::filesystem::remove_all((m_dir / "0").Std());
  Write({1}, kStart + 6);
  EXPECT_EQ(events.Take(), "0 not saved 0301021401d.csv 1: No such file or directory\n");
  m_stage.Close();  // while the listener exists
}

}  // namespace
}  // namespace vastra
