// The smart stage: what logic of the host reads and writes between two samples.
#include <gtest/gtest.h>

#include "tests/stages/samples.h"
#include "tests/support/recorder.h"
#include "vastra/stages/log_smart.h"

namespace vastra {
namespace {

class Smart : public testing::Test {
 protected:
  Smart() {
    m_stage.GetOptions()->m_equations = Equations("sum = a + b");
    m_stage.GetOptions()->m_inputVars = Names({"sum", "a", "nothing"});
    m_stage.GetOptions()->m_outputVars = Names({"u", "v"});
  }

  int Write(std::initializer_list<float> values, std::int32_t time = kStart) {
    CLogSample sample = Sample(values, time);
    return m_stage.Write(sample);
  }
  std::string Read() { return m_stage.Read(m_sample) ? Values(m_sample) : "failed"; }
  // All input variables that can be read; the value is left alone by the question that fails.
  std::string Inputs() {
    std::string all;
    float value = -1;
    for (UINT i = 0; m_stage.ReadInputVar(i, value); ++i, value = -1) all += std::to_string(int(value)) + " ";
    return all + std::to_string(int(value));
  }
  std::string Given() {
    CStringArray names;
    return m_stage.GetVarNames(names) ? Join(names) : "none";
  }

  CRecorder m_recorder;
  CStringArray m_names = Names({"a", "b"});
  CLogSample m_sample;
  CLogSmart m_stage;
};

TEST_F(Smart, OutputVariablesStandBehindTheSampleAndKeepWhatWasWritten) {
  float value = -1;
  ASSERT_EQ(1, m_stage.Open(m_names));
  EXPECT_EQ("a b u v", Given());
  EXPECT_EQ("-1", Inputs());
  EXPECT_EQ(1, m_stage.ReadOutputVar(1, value));
  EXPECT_EQ(0.0f, value);
  EXPECT_EQ(1, m_stage.WriteOutputVar(0, 8));
  EXPECT_EQ("8 0", Read()) << "no sample yet";

  EXPECT_EQ(1, Write({1, 2}, kStart + 1));
  EXPECT_EQ("3 1 0 -1", Inputs());
  EXPECT_EQ(1, m_stage.WriteOutputVar(1, 9));
  EXPECT_EQ(0, m_stage.WriteOutputVar(2, 7));
  EXPECT_EQ(0, m_stage.ReadOutputVar(2, value));
  EXPECT_EQ("1 2 8 9", Read());
  EXPECT_EQ("1 2 8 9", Read());
  EXPECT_EQ(kStart + 1, m_sample.m_time.time);

  EXPECT_EQ(1, Write({3, 4}, kStart + 2));
  EXPECT_EQ(1, m_stage.WriteOutputVar(0, 6));
  EXPECT_EQ("3 4 6 9", Read());
  EXPECT_EQ(kStart + 2, m_sample.m_time.time);

  ASSERT_EQ(1, m_stage.Open(m_names));
  EXPECT_EQ("0 0", Read());
  EXPECT_EQ("-1", Inputs());
}

TEST_F(Smart, OnlyANameOnBothSidesClashes) {
  const struct {
    std::initializer_list<const char*> names, outputs;
    const char* given;
  } kCases[] = {
      {{"a", "b"}, {"A"}, "a b A"},     {{"a", "b", "b"}, {"u", "u"}, "a b b u u"},
      {{"a", "b"}, {"sum"}, "a b sum"},  // an input variable of the same name lies elsewhere
      {{"a", "b"}, {}, "a b"},          {{"a", "b"}, {"u", "b"}, "none"},
      {{"b", "a"}, {"b"}, "none"},
  };
  for (const auto& row : kCases) {
    SCOPED_TRACE(row.given);
    const int opens = row.given != std::string("none");
    m_stage.GetOptions()->m_outputVars = Names(row.outputs);
    CStringArray names = Names(row.names);
    EXPECT_EQ(opens, m_stage.Open(names));
    EXPECT_EQ(opens ? "" : "Open Fatal SmartOutputConcatLink Variable names were duplicated.\n",
              m_recorder.TakeFaults());
    EXPECT_EQ(row.given, Given());
    EXPECT_EQ(opens, Write({1, 2}));
  }
}

TEST_F(Smart, AnIndexIsFoundByTheExactNameOpenOrNotAndIsZeroOnAMiss) {
  m_stage.GetOptions()->m_outputVars = Names({"u", "v", "v"});
  const struct {
    const char* name;
    int isInput;
    UINT input;
    int isOutput;
    UINT output;
  } kCases[] = {{"sum", 1, 0, 0, 0}, {"a", 1, 1, 0, 0}, {"A", 0, 0, 0, 0},
                {"b", 0, 0, 0, 0},   {"v", 0, 0, 1, 1}, {"", 0, 0, 0, 0}};
  for (const int open : {0, 1}) {
    ASSERT_EQ(1, !open || m_stage.Open(m_names));
    for (const auto& row : kCases) {
      CString name = row.name;
      UINT input = 7, output = 7;
      EXPECT_EQ(row.isInput, m_stage.GetInputIndex(name, input)) << row.name;
      EXPECT_EQ(row.input, input) << row.name;
      EXPECT_EQ(row.isOutput, m_stage.GetOutputIndex(name, output)) << row.name;
      EXPECT_EQ(row.output, output) << row.name;
    }
  }
}

TEST_F(Smart, AClosedStageGivesNothingButItsConfiguration) {
  for (const int open : {0, 1, 0}) {
    float value = 0;
    CStringArray in, out, inOffline = Names({"old"}), outOffline = Names({"old"});
    EXPECT_EQ(1, !open || m_stage.Open(m_names));
    EXPECT_EQ(open, Write({1, 2}));
    EXPECT_EQ(open ? "1 2 0 0" : "failed", Read());
    EXPECT_EQ(open, m_stage.ReadInputVar(0, value));
    EXPECT_EQ(open, m_stage.ReadOutputVar(0, value));
    EXPECT_EQ(open, m_stage.WriteOutputVar(0, 1));
    EXPECT_EQ(open, m_stage.GetSAInputVars(in));
    EXPECT_EQ(open, m_stage.GetSAOutputVars(out));
    EXPECT_EQ(open ? "sum a nothing/u v" : "/", Join(in) + "/" + Join(out));
    EXPECT_EQ(1, m_stage.GetSAInputVarsNotConnected(inOffline));
    EXPECT_EQ(1, m_stage.GetSAOutputVarsNotConnected(outOffline));
    EXPECT_EQ("sum a nothing/u v", Join(inOffline) + "/" + Join(outOffline));
    m_stage.Close();
  }
  EXPECT_EQ("", m_recorder.TakeFaults());
}

TEST_F(Smart, NamesAskedBeforehandLeaveTheStageAsItWas) {
  CStringArray result;
  EXPECT_EQ(1, m_stage.PreGetVarNames(result, m_names));
  EXPECT_EQ("a b u v", Join(result));
  EXPECT_EQ("none", Given());
  ASSERT_EQ(1, m_stage.Open(m_names));
  Write({1, 2});
  result.RemoveAll();
  EXPECT_EQ(0, m_stage.PreGetVarNames(result, m_names));
  EXPECT_EQ("", Join(result));
  EXPECT_EQ("1 2 0 0", Read());
  m_stage.Close();
  CStringArray without = Names({"a"});
  EXPECT_EQ(0, m_stage.PreGetVarNames(result, without));
  EXPECT_EQ("Open Fatal SmartInputEquatorLink Linker could not configure itself.\n", m_recorder.TakeFaults());
}

TEST_F(Smart, TheTraceShowsBothChainsAndACallBackChangesNothing) {
  CMessageQueue queue;
  CMessage message;
  m_stage.SetCallBack(1, &queue, 1);
  ASSERT_EQ(1, m_stage.Open(m_names));
  m_recorder.Take();
  EXPECT_EQ(1, Write({1, 2}));
  EXPECT_EQ(
      "Write Begin SmartInputEquatorLink\nWrite Begin SmartInputFileLink\nWrite End SmartInputFileLink\n"
      "Write End SmartInputEquatorLink\nWrite Begin SmartCopyFileLink\nWrite End SmartCopyFileLink\n",
      m_recorder.Take());
  EXPECT_EQ("1 2 0 0", Read());
  EXPECT_EQ(
      "Read Begin SmartOutputConcatLink\nRead Begin SmartCopyFileLink\nRead End SmartCopyFileLink\n"
      "Read Begin SmartOutputFileLink\nRead End SmartOutputFileLink\nRead End SmartOutputConcatLink\n",
      m_recorder.Take());
  EXPECT_EQ(0, queue.Wait(message, 0));
}

}  // namespace
}  // namespace vastra
