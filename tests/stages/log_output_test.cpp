// Log outputs: the enable equations decide which samples reach which log.
#include "tests/stages/samples.h"
#include "vastra/stages/log_multi_output.h"

namespace vastra {
namespace {

class LogOutput : public CStageFixture {
 protected:
  COutputConfig& Add(const char* equations, const CString& directory) {
    auto* output = new COutputConfig;
    output->m_enableEquations = Equations(equations);
    output->m_varNames = m_names;
    output->m_saveCsv = 1;
    output->m_directory = directory;
    output->m_nameVariable = "System Time";
    std::filesystem::create_directory(directory.Std());
    m_stage.GetOptions()->m_outputs.AddTail(output);
    return *output;
  }
  int Write(std::initializer_list<float> values) {
    CLogSample sample = Sample(values);
    return m_stage.Write(sample);
  }

  CStringArray m_names = Names({"x"});
  CLogMultiOutput m_stage;
};

TEST_F(LogOutput, TheFlagsDecideWhichSamplesGoIntoWhichLog) {
  constexpr struct {
    const char* equations;
    const char* logs;  // of the samples 1, 2, 3
    UINT maxSamples = 4000;
  } kCases[] = {
      {"WriteToLog = 1", "00: 1 2 3|"},
      {"WriteToLog = 0.9", ""},
      {"WriteToLog = -1", "00: 1 2 3|"},
      {"WriteToLog = -0.9", ""},
      {"WriteToLog = x > 1", "00: 2 3|"},
      {"SampleIsValid = 0;WriteToLog = 1", "00: 1 2 3|"},
      {"SampleIsValid = 1", ""},
      {"WriteToLog = 1;RestartLog = 1", "00: 1|01: 2|02: 3|"},
      {"WriteToLog = 1;RestartLog = x == 3", "00: 1 2|01: 3|"},
      {"WriteToLog = 1;RestartLog = 0.5", "00: 1 2 3|"},
      {"RestartLog = 1", ""},
      {"WriteToLog = 1", "00: 1 2|01: 3|", 2},
      {"WriteToLog = 1", "00: 1|01: 2|02: 3|", 0},
      {"n = n + 1;WriteToLog = n == 2", "00: 2|"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.equations);
    CTempDir dir;
    Add(row.equations, dir.Path()).m_maxSamples = row.maxSamples;
    ASSERT_EQ(m_stage.Open(m_names), 1);
    for (const float x : {1.0f, 2.0f, 3.0f}) EXPECT_EQ(Write({x}), 1);
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ(Logs(dir.Path()), row.logs);
  }
}

TEST_F(LogOutput, AMapperIsAddedOnlyWhereTheNamesDiffer) {
  const struct {
    std::initializer_list<const char*> names, varNames;
    const char* logs;  // of the sample 1, 2, 3
    bool mapper;
  } kCases[] = {
      {{"a", "b", "c"}, {"a", "b", "c"}, "00: 1/2/3|", false},
      {{"a", "a", "b"}, {"a", "a", "b"}, "00: 1/2/3|", false},
      {{"a", "b", "c"}, {"c", "a", "b"}, "00: 3/1/2|", true},
      {{"a", "b", "c"}, {"B", "c"}, "00: 0/3|", true},
      {{"a", "a", "b"}, {"b", "a"}, "00: 3/1|", true},
  };
  for (const auto& row : kCases) {
    CTempDir dir;
    Add("WriteToLog = 1", dir.Path()).m_varNames = Names(row.varNames);
    CStringArray names = Names(row.names);
    ASSERT_EQ(m_stage.Open(names), 1);
    EXPECT_EQ(m_recorder.Take().find("OutputMapperLink") != std::string::npos, row.mapper);
    EXPECT_EQ(Write({1, 2, 3}), 1);
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ(Logs(dir.Path()), row.logs);
  }
}

TEST_F(LogOutput, EachSettingReachesTheLogs) {
  COutputConfig& output = Add("WriteToLog = 1", m_dir.Path());
  output.m_varNames = m_names = Names({"x", "y"});
  output.m_nameVariable = "x";
  output.m_dwordName = output.m_usePrefix = output.m_saveRp = output.m_maxSamples = 1;
  output.m_prefix = "P";
  output.m_maxLogs = 2;
  ASSERT_EQ(m_stage.Open(m_names), 1);
  for (const float x : {1.0f, 2.0f, 3.0f}) Write({x, 7});
  CStringArray files;
  for (const CFileEntry& file : ListFiles(m_dir.Path(), "")) files.Add(file.m_name);
  EXPECT_EQ(Join(files), "P27.rph P27h.csv P37.rph P37h.csv");
}

TEST_F(LogOutput, WithoutFilesNeitherDirectoryNorNamingVariableIsTested) {
  EXPECT_EQ(m_stage.Restart(), 0);
  for (const bool empty : {true, false}) {
    COutputConfig& output = Add("WriteToLog = 1", m_dir.Path());
    output.m_directory = "/nowhere";
    output.m_saveCsv = 0;
    output.m_nameVariable = "nothing";
    if (empty) m_stage.ClearConfiguration();
    EXPECT_EQ(m_stage.Open(m_names), 1);
    EXPECT_EQ(Write({1}), 1);
    EXPECT_EQ(m_stage.Restart(), 1);
  }
  EXPECT_EQ(m_recorder.TakeFaults(), "");
}

TEST_F(LogOutput, AFailingOutputHidesTheSampleFromLaterOutputsAndTheStageContinues) {
  const CString dirs[] = {m_dir / "0", m_dir / "1", m_dir / "2"};
  for (const CString& dir : dirs) Add("WriteToLog = 1", dir).m_maxSamples = 1;
  ASSERT_EQ(m_stage.Open(m_names), 1);
  std::filesystem::remove(dirs[1].Std());
  EXPECT_EQ(Write({1}), 0);
  std::filesystem::create_directory(dirs[1].Std());
  EXPECT_EQ(Write({2}), 1);
  EXPECT_EQ(Logs(dirs[0]) + Logs(dirs[1]) + Logs(dirs[2]), "00: 1|01: 2|01: 2|00: 2|");
}

TEST_F(LogOutput, AnOutputThatDoesNotOpenLeavesNoneAndAClosedStage) {
  Add("WriteToLog = 1", m_dir.Path());
  Add("WriteToLog = 1", m_dir.Path()).m_nameVariable = "y";
  EXPECT_EQ(m_stage.Open(m_names), 0);
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Open Fatal OutputFileLink The variable used for naming the logs is not included in the logged "
            "variables\n\n"
            "Flush Warning OutputFileLink Tried to flush an empty log.\n");
  EXPECT_EQ(Write({1}), 0);
  EXPECT_EQ(m_stage.Restart(), 0);
}

TEST_F(LogOutput, OpeningAgainAndDestructionFlushTheLastLog) {
  {
    CLogSingleOutput output;
    *output.GetOptions() = Add("WriteToLog = 1", m_dir.Path());
    CLogSample sample = Sample({1});
    EXPECT_EQ(output.Write(sample), 0);
    EXPECT_EQ(output.Open(m_names), 1);
    EXPECT_EQ(output.Write(sample), 1);
    EXPECT_EQ(output.Open(m_names), 1);
    EXPECT_EQ(Logs(m_dir.Path()), "00: 1|");
    sample.m_values[0] = 2;
    EXPECT_EQ(output.Write(sample), 1);
  }
  EXPECT_EQ(Logs(m_dir.Path()), "00: 2|");  // a new link begins at number 00
}

}  // namespace
}  // namespace vastra
