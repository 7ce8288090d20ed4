// The smart stage: the variables that logic of the host reads and writes between two samples.
#include "tests/stages/samples.h"
#include "vastra/stages/log_smart.h"

namespace vastra {
namespace {

class Smart : public CStageFixture {
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
  // All input variables that can be read; the call that fails leaves the value unchanged.
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

  CStringArray m_names = Names({"a", "b"});
  CLogSample m_sample;
  CLogSmart m_stage;
};

TEST_F(Smart, OutputVariablesFollowTheSampleAndKeepTheirValues) {
  float value = -1;
  ASSERT_EQ(m_stage.Open(m_names), 1);
  EXPECT_EQ(Given(), "a b u v");
  EXPECT_EQ(Inputs(), "-1");
  EXPECT_EQ(m_stage.ReadOutputVar(1, value), 1);
  EXPECT_EQ(value, 0.0f);
  EXPECT_EQ(m_stage.WriteOutputVar(0, 8), 1);
  EXPECT_EQ(Read(), "8 0") << "no sample yet";

  EXPECT_EQ(Write({1, 2}, kStart + 1), 1);
  EXPECT_EQ(Inputs(), "3 1 0 -1");
  EXPECT_EQ(m_stage.WriteOutputVar(1, 9), 1);
  EXPECT_EQ(m_stage.WriteOutputVar(2, 7), 0);
  EXPECT_EQ(m_stage.ReadOutputVar(2, value), 0);
  EXPECT_EQ(Read(), "1 2 8 9");
  EXPECT_EQ(Read(), "1 2 8 9");
  EXPECT_EQ(m_sample.m_time.time, kStart + 1);

  EXPECT_EQ(Write({3, 4}, kStart + 2), 1);
  EXPECT_EQ(m_stage.WriteOutputVar(0, 6), 1);
  EXPECT_EQ(Read(), "3 4 6 9");
  EXPECT_EQ(m_sample.m_time.time, kStart + 2);

  ASSERT_EQ(m_stage.Open(m_names), 1);
  EXPECT_EQ(Read(), "0 0");
  EXPECT_EQ(Inputs(), "-1");
}

TEST_F(Smart, AnOutputMayHaveTheNameOfAnInputButNotOfASampleVariable) {
  m_stage.GetOptions()->m_outputVars = Names({"u", "b"});
  EXPECT_EQ(m_stage.Open(m_names), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "Open Fatal SmartOutputConcatLink Variable names were duplicated.\n");
  EXPECT_EQ(Given(), "none");
  EXPECT_EQ(Write({1, 2}), 0);
  m_stage.GetOptions()->m_outputVars = Names({"sum", "u", "u"});
  EXPECT_EQ(m_stage.Open(m_names), 1);
  EXPECT_EQ(Given(), "a b sum u u");
}

TEST_F(Smart, AnIndexIsFoundByTheExactNameAndIsZeroOnAMiss) {
  m_stage.GetOptions()->m_outputVars = Names({"u", "v", "v"});
  const struct {
    const char* name;
    int isInput;
    UINT input;
    int isOutput;
    UINT output;
  } kCases[] = {{"sum", 1, 0, 0, 0}, {"a", 1, 1, 0, 0}, {"A", 0, 0, 0, 0}, {"v", 0, 0, 1, 1}};
  for (const auto& row : kCases) {
    CString name = row.name;
    UINT input = 7, output = 7;
    EXPECT_EQ(m_stage.GetInputIndex(name, input), row.isInput) << row.name;
    EXPECT_EQ(input, row.input) << row.name;
    EXPECT_EQ(m_stage.GetOutputIndex(name, output), row.isOutput) << row.name;
    EXPECT_EQ(output, row.output) << row.name;
  }
}

TEST_F(Smart, AClosedStageOffersOnlyItsConfiguration) {
  for (const int open : {0, 1, 0}) {
    float value = 0;
    CStringArray in, out, inOffline = Names({"old"}), outOffline = Names({"old"});
    EXPECT_EQ(!open || m_stage.Open(m_names), 1);
    EXPECT_EQ(Write({1, 2}), open);
    EXPECT_EQ(Read(), open ? "1 2 0 0" : "failed");
    for (const int result :
         {m_stage.ReadInputVar(0, value), m_stage.ReadOutputVar(0, value), m_stage.WriteOutputVar(0, 1),
          m_stage.GetSAInputVars(in), m_stage.GetSAOutputVars(out)})
      EXPECT_EQ(result, open);
    EXPECT_EQ(Join(in) + "/" + Join(out), open ? "sum a nothing/u v" : "/");
    EXPECT_EQ(m_stage.GetSAInputVarsNotConnected(inOffline), 1);
    EXPECT_EQ(m_stage.GetSAOutputVarsNotConnected(outOffline), 1);
    EXPECT_EQ(Join(inOffline) + "/" + Join(outOffline), "sum a nothing/u v");
    m_stage.Close();
  }
  EXPECT_EQ(m_recorder.TakeFaults(), "");
}

TEST_F(Smart, PreGetVarNamesLeavesTheStageAsItWas) {
  CStringArray result;
  EXPECT_EQ(m_stage.PreGetVarNames(result, m_names), 1);
  EXPECT_EQ(Join(result), "a b u v");
  EXPECT_EQ(Given(), "none");
  ASSERT_EQ(m_stage.Open(m_names), 1);
  Write({1, 2});
  result.RemoveAll();
  EXPECT_EQ(m_stage.PreGetVarNames(result, m_names), 0);
  EXPECT_EQ(Join(result), "");
  EXPECT_EQ(Read(), "1 2 0 0");
  m_stage.Close();
  CStringArray without = Names({"a"});
  EXPECT_EQ(m_stage.PreGetVarNames(result, without), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "Open Fatal SmartInputEquatorLink Linker could not configure itself.\n");
}

}  // namespace
}  // namespace vastra
