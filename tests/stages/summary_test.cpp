// Summaries: which samples the equations see, which of them become rows, and in which file.
#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

constexpr const char* kAlways = "SampleIsValid = 1;WriteToSummary = 1";

class Summary : public CStageFixture {
 protected:
  // A summary of x that counts the samples and adds them up, in a directory of its own.
  CSummaryConfig& Add(const char* enable, const char* directory = "0") {
    auto* config = new CSummaryConfig;
    config->m_enableEquations = Equations(enable);
    config->m_summaryEquations = Equations("n = n + 1;sum = sum + x");
    config->m_varNames = Names({"n", "sum"});
    config->m_saveCsv = 1;
    config->m_directory = m_dir / directory;
    std::filesystem::create_directory(config->m_directory.Std());
    m_stage.GetOptions()->m_summaries.AddTail(config);
    return *config;
  }
  int Open() { return m_stage.Open(m_names); }
  int Write(float x, std::int32_t time = kStart) {
    CLogSample sample = Sample({x}, time);
    return m_stage.Write(sample);
  }
  // The results of the samples 1, 2, 3.
  std::string WriteThree() {
    std::string results;
    for (const float x : {1.0f, 2.0f, 3.0f}) results += std::to_string(Write(x));
    return results;
  }

  CStringArray m_names = Names({"x"});
  CLogMultiSummary m_stage;
};

TEST_F(Summary, TheFlagsDecideWhatTheEquationsSeeAndWhatBecomesARow) {
  constexpr struct {
    const char *enable, *results, *logs;
    UINT maxSamples = 4000, maxSummaries = 400;
  } kCases[] = {
      {kAlways, "111", "00: 1/1 2/3 3/6|"},
      {"WriteToSummary = 1", "000", ""},
      {"SampleIsValid = 0.9;WriteToSummary = 1", "000", ""},
      {"SampleIsValid = -1;WriteToSummary = -1", "111", "00: 1/1 2/3 3/6|"},
      {"SampleIsValid = 1;WriteToSummary = 0.9", "111", ""},
      {"SampleIsValid = 1;WriteToSummary = x == 3", "111", "00: 3/6|"},
      {"SampleIsValid = x != 2;WriteToSummary = 1", "101", "00: 1/1 2/4|"},
      {"SampleIsValid = 1;WriteToSummary = 1;RestartSummary = x == 2", "111", "00: 1/1|01: 2/3 3/6|"},
      {"SampleIsValid = 1;WriteToSummary = x != 2;RestartSummary = x == 2", "111", "00: 1/1|01: 3/6|"},
      {kAlways, "111", "00: 1/1 2/3|01: 3/6|", 2},
      {kAlways, "111", "00: 1/1|01: 2/3|02: 3/6|", 0},
      {kAlways, "111", "01: 2/3|02: 3/6|", 1, 2},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.enable);
    CTempDir dir;
    CSummaryConfig& config = Add(row.enable);
    config.m_directory = dir.Path();
    config.m_maxSamples = row.maxSamples;
    config.m_maxSummaries = row.maxSummaries;
    ASSERT_EQ(Open(), 1);
    EXPECT_EQ(WriteThree(), row.results);
    EXPECT_EQ(Logs(dir.Path()), row.logs) << "rows are on the disk at once";
    m_stage.Close();
    EXPECT_EQ(Logs(dir.Path()), row.logs);
    m_stage.ClearConfiguration();
  }
}

TEST_F(Summary, ASampleThatOneSummaryFindsInvalidIsWithheldFromLaterOnes) {
  Add(kAlways, "0");
  Add("SampleIsValid = x != 2;WriteToSummary = 1", "1");
  Add("SampleIsValid = x != 3", "2").m_saveCsv = 0;
  Add(kAlways, "3");
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(WriteThree(), "100");
  EXPECT_EQ(Logs(m_dir / "0") + Logs(m_dir / "1") + Logs(m_dir / "3"),
            "00: 1/1 2/3 3/6|00: 1/1 2/4|00: 1/1|");
}

TEST_F(Summary, TheTraceShowsRestartEquationsAndRowInThisOrder) {
  Add("SampleIsValid = 1;WriteToSummary = 1;RestartSummary = x == 2");
  ASSERT_EQ(Open(), 1);
  Write(1);
  m_recorder.Take();
  Write(2);
  const std::string question = "Read Begin EnableFileLink\nRead End EnableFileLink\n";
  EXPECT_EQ(m_recorder.Take(),
            "Write Begin EnableEquatorLink\nWrite Begin EnableFileLink\nWrite End EnableFileLink\n"
            "Write End EnableEquatorLink\n" +
                question + question +
                "Flush Begin SummaryArchiveFileLink\nPartialFlush Begin SummaryArchiveFileLink\n"
                "PartialFlush End SummaryArchiveFileLink\nFlush End SummaryArchiveFileLink\n"
                "Write Begin SummaryEquatorLink\nWrite Begin SummaryBufferFileLink\n"
                "Write End SummaryBufferFileLink\nWrite End SummaryEquatorLink\n" +
                question +
                "Read Begin SummaryBufferFileLink\nRead End SummaryBufferFileLink\n"
                "Write Begin SummaryArchiveFileLink\nWrite End SummaryArchiveFileLink\n"
                "PartialFlush Begin SummaryArchiveFileLink\nPartialFlush End SummaryArchiveFileLink\n");
}

TEST_F(Summary, ARestartKeepsTheCountsAndAnOpenStartsThemAtZero) {
  Add(kAlways);
  EXPECT_EQ(m_stage.Restart(), 0);
  ASSERT_EQ(Open(), 1);
  Write(5);
  EXPECT_EQ(m_stage.Restart(), 1);
  Write(5);
  ASSERT_EQ(Open(), 1);
  Write(7, kStart + 3600);
  EXPECT_EQ(Logs(m_dir / "0"), "00: 1/5|01: 2/10|00: 1/7|");
}

TEST_F(Summary, AFailingSummaryHidesTheSampleFromLaterOnesAndKeepsItsRows) {
  CSummaryConfig& config = Add(kAlways, "0");
  config.m_saveRp = 1;
  Add(kAlways, "1");
  ASSERT_EQ(Open(), 1);
  std::filesystem::remove((m_dir / "0").Std());
  EXPECT_EQ(Write(1), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "PartialFlush Error SummaryArchiveFileLink Couldn't save file.\n");
  std::filesystem::create_directory((m_dir / "0").Std());
  EXPECT_EQ(Write(2, kStart + 3600), 1);
  EXPECT_EQ(Logs(m_dir / "0") + Logs(m_dir / "1"), "00: 1/1 2/3|00: 1/2|");
  EXPECT_TRUE(FileExists(m_dir / "0/0301021400.rpd"));
}

TEST_F(Summary, WithoutFilesOnlyTheEnableEquationsExist) {
  CSummaryConfig& config = Add(kAlways);
  config.m_saveCsv = 0;
  config.m_directory = "/nowhere";
  config.m_summaryEquations = Equations("no equation");
  CLogSingleSummary summary;
  *summary.GetOptions() = config;
  CLogSample sample = Sample({1});
  for (const int open : {0, 1, 0}) {
    EXPECT_EQ(!open || summary.Open(m_names), 1);
    for (const int result : {summary.Verify(sample), summary.IsSampleValid(), summary.WriteToSummary(),
                             summary.AddToSummary(sample), summary.Flush(), summary.Restart()})
      EXPECT_EQ(result, open);
    EXPECT_EQ(summary.RestartSummary(), 0);
    summary.Close();
  }
  EXPECT_EQ(m_recorder.TakeFaults(), "");
}

TEST_F(Summary, AFailedOpenNamesTheLinkAndLeavesNoSummary) {
  const struct {
    const char *enable, *equations, *directory, *fault;
  } kCases[] = {
      {"SampleIsValid = y", "n = 1", ".", "EnableEquatorLink Linker could not configure itself."},
      {kAlways, "n = y", ".", "SummaryEquatorLink Linker could not configure itself."},
      {kAlways, "n = 1", "/nowhere",
       "SummaryArchiveFileLink There is a problem with the destination directory"},
  };
  const std::string first = "\nFlush Warning SummaryArchiveFileLink Tried to flush an empty log.\n";
  for (const auto& row : kCases) {
    Add(kAlways, "0");
    CSummaryConfig& config = Add(row.enable, "1");
    config.m_summaryEquations = Equations(row.equations);
    config.m_directory = row.directory;
    EXPECT_EQ(Open(), 0);
    EXPECT_EQ(m_recorder.TakeFaults(), std::string("Open Fatal ") + row.fault + first);
    EXPECT_EQ(Write(1), 0);
    EXPECT_EQ(m_stage.Restart(), 0);
    m_stage.ClearConfiguration();
  }
}

}  // namespace
}  // namespace vastra
