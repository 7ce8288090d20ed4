#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_output.h"

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

}  // namespace
}  // namespace vastra
