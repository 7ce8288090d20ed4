#include "tests/stages/samples.h"
#include "vastra/stages/log_smart.h"

namespace vastra {
namespace {

class Smart : public CStageFixture<CLogSmart> {
 protected:
  Smart() {
    Options().m_equations = Split("sum = a + b", ';');
    Options().m_inputVars = Split("sum a nothing");
    Options().m_outputVars = Split("u v");
  }
  // All input variables that can be read; the call that fails leaves the value unchanged.
  std::string Inputs() {
    std::string all;
    float value = -1;
    for (UINT i = 0; m_stage.ReadInputVar(i, value); ++i, value = -1) all += std::to_string(int(value)) + " ";
    return all + std::to_string(int(value));
  }
};

TEST_F(Smart, OutputVariablesFollowTheSampleAndKeepTheirValues) {
  float value = -1;
  ASSERT_EQ(Open("a b"), 1);
  EXPECT_EQ(Given(), "a b u v");
  EXPECT_EQ(Inputs(), "-1");
  EXPECT_EQ(m_stage.WriteOutputVar(0, 8), 1);
  EXPECT_EQ(Read(), "8 0") << "no sample yet";

  EXPECT_EQ(Write({1, 2}, kStart + 1), 1);
  EXPECT_EQ(Inputs(), "3 1 0 -1");
  EXPECT_EQ(m_stage.WriteOutputVar(1, 9), 1);
  EXPECT_EQ(m_stage.WriteOutputVar(2, 7) + m_stage.ReadOutputVar(2, value), 0);
  for (int time = 0; time < 2; ++time) EXPECT_EQ(Read(), "1 2 8 9");
  EXPECT_EQ(m_sample.m_time.time, kStart + 1);
  EXPECT_EQ(Write({3, 4}), 1);
  EXPECT_EQ(m_stage.WriteOutputVar(0, 6), 1);
  EXPECT_EQ(Read(), "3 4 6 9");

  ASSERT_EQ(Open("a b"), 1);
  EXPECT_EQ(Read(), "0 0");
  EXPECT_EQ(Inputs(), "-1");
}

TEST_F(Smart, AnIndexIsFoundByTheExactNameAndIsZeroOnAMiss) {
  for (const char text : {'a', 'A', 'v'}) {
    CString name(text);
    UINT input = 7, output = 7;
    EXPECT_EQ(m_stage.GetInputIndex(name, input), text == 'a');
    EXPECT_EQ(m_stage.GetOutputIndex(name, output), text == 'v');
    EXPECT_EQ(input, text == 'a' ? 1u : 0u);
    EXPECT_EQ(output, text == 'v' ? 1u : 0u);
  }
}

TEST_F(Smart, AClosedStageOffersOnlyItsConfiguration) {
  for (const int open : {0, 1, 0}) {
    float value = 0;
    CStringArray in, out, inOffline = Split("old"), outOffline = Split("old"), given, names = Split("a b");
    EXPECT_EQ(!open || Open("a b"), 1);
    EXPECT_EQ(Write({1, 2}), open);
    EXPECT_EQ(m_stage.PreGetVarNames(given, names), !open);
    EXPECT_EQ(Join(given) + "/" + Given(), open ? "/a b u v" : "a b u v/none");
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

}  // namespace
}  // namespace vastra
