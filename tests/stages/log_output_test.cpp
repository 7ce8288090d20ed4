// Log outputs: which samples reach which log, decided by the enable equations.
#include <gtest/gtest.h>

#include "tests/stages/samples.h"
#include "tests/support/recorder.h"
#include "vastra/stages/log_multi_output.h"

namespace vastra {
namespace {

class LogOutput : public testing::Test {
 protected:
  LogOutput() {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
  }

  COutputConfig& Add(const char* equations, const CStringArray& names) {
    auto* output = new COutputConfig;
    output->m_enableEquations = Equations(equations);
    output->m_varNames = names;
    output->m_saveCsv = 1;
    output->m_directory = m_dir.Path();
    output->m_nameVariable = "System Time";
    m_stage.GetOptions()->m_outputs.AddTail(output);
    return *output;
  }

  int Write(std::initializer_list<float> values) {
    CLogSample sample = Sample(values);
    return m_stage.Write(sample);
  }

  CRecorder m_recorder;
  CTempDir m_dir;
  CLogMultiOutput m_stage;
};

struct CFlagCase {
  const char* equations;
  const char* logs;  // of the samples 1, 2, 3
  UINT maxSamples = 4000;
};

TEST_F(LogOutput, TheFlagsDecideWhichSamplesGoIntoWhichLog) {
  constexpr CFlagCase kCases[] = {
      {"WriteToLog = 1", "00: 1 2 3|"},
      {"WriteToLog = 0.9", ""},
      {"WriteToLog = -1", "00: 1 2 3|"},
      {"WriteToLog = -0.9", ""},
      {"WriteToLog = x > 1", "00: 2 3|"},
      {"WriteToLog = 1 / 0", ""},
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
  for (const CFlagCase& row : kCases) {
    SCOPED_TRACE(row.equations);
    CTempDir dir;
    auto& output = Add(row.equations, {});
    CStringArray names = Names({"x"});
    output.m_varNames = names;
    output.m_directory = dir.Path();
    output.m_maxSamples = row.maxSamples;
    ASSERT_EQ(1, m_stage.Open(names));
    for (const float x : {1.0f, 2.0f, 3.0f}) EXPECT_EQ(1, Write({x}));
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ(row.logs, Logs(dir.Path()));
  }
}

struct CNameCase {
  std::initializer_list<const char*> names, varNames;
  const char* logs;  // of the sample 1, 2, 3
  bool mapper;
};

TEST_F(LogOutput, AMapperStandsOnlyWhereTheNamesDiffer) {
  const CNameCase kCases[] = {
      {{"a", "b", "c"}, {"a", "b", "c"}, "00: 1/2/3|", false},
      {{"a", "a", "b"}, {"a", "a", "b"}, "00: 1/2/3|", false},
      {{"a", "b", "c"}, {"c", "a", "b"}, "00: 3/1/2|", true},
      {{"a", "b", "c"}, {"b"}, "00: 2|", true},
      {{"a", "b", "c"}, {"B", "c"}, "00: 0/3|", true},
      {{"a", "a", "b"}, {"b", "a"}, "00: 3/1|", true},
  };
  for (const CNameCase& row : kCases) {
    SCOPED_TRACE(row.logs);
    CTempDir dir;
    Add("WriteToLog = 1", Names(row.varNames)).m_directory = dir.Path();
    CStringArray names = Names(row.names);
    ASSERT_EQ(1, m_stage.Open(names));
    EXPECT_EQ(row.mapper, m_recorder.Take().find("OutputMapperLink") != std::string::npos);
    EXPECT_EQ(1, Write({1, 2, 3}));
    m_stage.Close();
    m_stage.ClearConfiguration();
    EXPECT_EQ(row.logs, Logs(dir.Path()));
  }
}

TEST_F(LogOutput, AnInputNamedLikeAFlagBeatsTheEquation) {
  Add("WriteToLog = 1", Names({"x"}));
  CStringArray names = Names({"x", "WriteToLog"});
  ASSERT_EQ(1, m_stage.Open(names));
  Write({1, 0});
  Write({2, 1});
  m_stage.Close();
  EXPECT_EQ("00: 2|", Logs(m_dir.Path()));
}

TEST_F(LogOutput, EachQuestionReadsTheBufferOnceInTheTrace) {
  Add("WriteToLog = 1", Names({"x"}));
  CStringArray names = Names({"x"});
  ASSERT_EQ(1, m_stage.Open(names));
  m_recorder.Take();
  Write({1});
  EXPECT_EQ(
      "Write Begin EnableEquatorLink\nWrite Begin EnableFileLink\nWrite End EnableFileLink\n"
      "Write End EnableEquatorLink\n"
      "Read Begin EnableFileLink\nRead End EnableFileLink\n"
      "Read Begin EnableFileLink\nRead End EnableFileLink\n"
      "Write Begin OutputFileLink\nWrite End OutputFileLink\n",
      m_recorder.Take());
}

TEST_F(LogOutput, WithoutFilesNeitherDirectoryNorNamingVariableIsTested) {
  COutputConfig& output = Add("WriteToLog = 1", Names({"x"}));
  output.m_saveCsv = 0;
  output.m_directory = "/nowhere";
  output.m_nameVariable = "nothing";
  CStringArray names = Names({"x"});
  EXPECT_EQ(1, m_stage.Open(names));
  EXPECT_EQ(1, Write({1}));
  EXPECT_EQ(1, m_stage.Restart());
  EXPECT_EQ("", m_recorder.TakeFaults());
}

TEST_F(LogOutput, AFailingOutputHidesTheSampleFromThoseBehindAndTheStageGoesOn) {
  CTempDir gone, last;
  Add("WriteToLog = 1", Names({"x"})).m_maxSamples = 1;
  COutputConfig& failing = Add("WriteToLog = 1", Names({"x"}));
  failing.m_maxSamples = 1;
  failing.m_directory = gone / "logs";
  std::filesystem::create_directory(failing.m_directory.Std());
  Add("WriteToLog = 1", Names({"x"})).m_directory = last.Path();
  CStringArray names = Names({"x"});
  ASSERT_EQ(1, m_stage.Open(names));
  std::filesystem::remove(failing.m_directory.Std());
  EXPECT_EQ(0, Write({1}));
  EXPECT_EQ("Flush Error OutputFileLink Couldn't save CSV file.\n", m_recorder.TakeFaults());
  std::filesystem::create_directory(failing.m_directory.Std());
  EXPECT_EQ(1, Write({2}));
  const CString directory = failing.m_directory;
  m_stage.Close();
  EXPECT_EQ("00: 1|01: 2|", Logs(m_dir.Path()));
  EXPECT_EQ("01: 2|", Logs(directory));  // a failed save uses its number up
  EXPECT_EQ("00: 2|", Logs(last.Path()));
}

TEST_F(LogOutput, AnOutputThatDoesNotOpenLeavesNoneAndAClosedStage) {
  Add("WriteToLog = 1", Names({"x"}));
  Add("WriteToLog = 1", Names({"x"})).m_nameVariable = "y";
  CStringArray names = Names({"x"});
  EXPECT_EQ(0, m_stage.Open(names));
  EXPECT_EQ(
      "Open Fatal OutputFileLink The variable used for naming the logs is not included in the logged "
      "variables\n\n"
      "Flush Warning OutputFileLink Tried to flush an empty log.\n",
      m_recorder.TakeFaults());
  EXPECT_EQ(0, Write({1}));
  EXPECT_EQ(0, m_stage.Restart());
  m_stage.Close();
  m_stage.Close();
}

TEST_F(LogOutput, ReopeningAndDestructionFlushWhatWasGathered) {
  CStringArray names = Names({"x"});
  {
    CLogSingleOutput output;
    *output.GetOptions() = Add("WriteToLog = 1", names);
    CLogSample sample = Sample({1});
    EXPECT_EQ(0, output.Write(sample));
    EXPECT_EQ(1, output.Open(names));
    EXPECT_EQ(1, output.Write(sample));
    EXPECT_EQ(1, output.Open(names));
    EXPECT_EQ("00: 1|", Logs(m_dir.Path()));
    sample.m_values[0] = 2;
    EXPECT_EQ(1, output.Write(sample));
  }
  EXPECT_EQ("00: 2|", Logs(m_dir.Path()));  // a new link starts at number 00 again
}

TEST_F(LogOutput, AnEmptyConfigurationTakesEverySample) {
  CStringArray names = Names({"x"});
  EXPECT_EQ(1, m_stage.Open(names));
  EXPECT_EQ(1, Write({1}));
  EXPECT_EQ(1, m_stage.Restart());
}

}  // namespace
}  // namespace vastra
