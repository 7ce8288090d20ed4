// Log outputs: the enable equations decide which samples reach which log.
#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_output.h"

namespace vastra {
namespace {

class LogOutput : public CStageFixture<CLogMultiOutput> {
 protected:
  COutputConfig& Add(const char* equations, const CString& directory) {
    auto* output = NewConfig<COutputConfig>(equations, directory);
    output->m_nameVariable = "System Time";
    Options().m_outputs.AddTail(output);
    return *output;
  }
};

TEST_F(LogOutput, TheFlagsDecideWhichSamplesGoIntoWhichLog) {
  constexpr std::pair<const char*, const char*> kLogs[] = {
      {"WriteToLog = 1", "00: 1 2 3|"},
      {"WriteToLog = 0.9", ""},
      {"WriteToLog = -1", "00: 1 2 3|"},
      {"WriteToLog = x > 1", "00: 2 3|"},
      {"SampleIsValid = 0;WriteToLog = 1", "00: 1 2 3|"},
      {"WriteToLog = 1;RestartLog = x == 3", "00: 1 2|01: 3|"},
      {"WriteToLog = 1;RestartLog = 0.5", "00: 1 2 3|"},
      {"RestartLog = 1", ""},
      {"n = n + 1;WriteToLog = n == 2", "00: 2|"},
  };
  for (const auto& [equations, logs] : kLogs) {
    CTempDir dir;
    Add(equations, dir.Path());
    ASSERT_EQ(Open(), 1);
    EXPECT_EQ(WriteThree(), "111");
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ(Logs(dir.Path()), logs) << equations;
  }
}

TEST_F(LogOutput, RepeatedNamesKeepTheirValuesUnlessTheLogHasOtherNames) {
  Add("WriteToLog = 1", m_dir / "0").m_varNames = Split("a b b");
  Add("WriteToLog = 1", m_dir / "1").m_varNames = Split("b a C");
  ASSERT_EQ(Open("a b b"), 1);
  EXPECT_EQ(Write({1, 2, 3}), 1);
  m_stage.Close();
  EXPECT_EQ(Logs(m_dir / "0") + Logs(m_dir / "1"), "00: 1/2/3|00: 2/1/0|");
}

TEST_F(LogOutput, EachSettingReachesTheLogs) {
  COutputConfig& output = Add("WriteToLog = 1", m_dir.Path());
  output.m_varNames = Split("x y");
  output.m_nameVariable = "x";
  output.m_dwordName = output.m_usePrefix = output.m_saveRp = output.m_maxSamples = 1;
  output.m_prefix = "P";
  output.m_maxLogs = 2;
  ASSERT_EQ(Open("x y"), 1);
  for (const float x : {1.0f, 2.0f, 3.0f}) Write({x, 7});
  std::string files;
  for (const CFileEntry& file : ListFiles(m_dir.Path(), "")) files += file.m_name.Std() + " ";
  EXPECT_EQ(files, "P27.rph P27h.csv P37.rph P37h.csv ");
}

TEST_F(LogOutput, AFailingOutputHidesTheSampleFromLaterOutputsAndTheStageContinues) {
  const CString dirs[] = {m_dir / "0", m_dir / "1", m_dir / "2"};
  COutputConfig& without = Add("WriteToLog = 1", m_dir.Path());
  without.m_saveCsv = 0;
  without.m_directory = "/nowhere";
  for (const CString& dir : dirs) Add("WriteToLog = 1", dir).m_maxSamples = 1;
  ASSERT_EQ(Open(), 1);
  std::filesystem::remove(dirs[1].Std());
  EXPECT_EQ(Write({1}), 0);
  std::filesystem::create_directory(dirs[1].Std());
  EXPECT_EQ(Write({2}), 1);
  EXPECT_EQ(Logs(dirs[0]) + Logs(dirs[1]) + Logs(dirs[2]), "00: 1|01: 2|01: 2|00: 2|");
}

TEST_F(LogOutput, OpeningAgainFlushesTheLastLogAndAFailedOpenLeavesNoOutput) {
  Add("WriteToLog = 1", m_dir.Path());
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(Write({1}), 1);
  Add("WriteToLog = 1", m_dir.Path()).m_nameVariable = "y";
  EXPECT_EQ(Open(), 0);
  EXPECT_EQ(Logs(m_dir.Path()), "00: 1|");
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Open Fatal OutputFileLink The variable used for naming the logs is not included in the logged "
            "variables\n\n"
            "Flush Warning OutputFileLink Tried to flush an empty log.\n");
  EXPECT_EQ(Write({1}) + m_stage.Restart(), 0);
}

}  // namespace
}  // namespace vastra
