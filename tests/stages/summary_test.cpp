#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_summary.h"

namespace vastra {
namespace {

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

}  // namespace
}  // namespace vastra
