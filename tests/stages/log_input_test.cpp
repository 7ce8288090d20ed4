#include "vastra/stages/log_input.h"

#include "tests/logfiles/example.h"
#include "tests/stages/samples.h"

namespace vastra {
namespace {

class LogInput : public CStageFixture<CLogInput> {
 protected:
  // A node whose values are all `value`.
  CPlcNodeConfig& Add(const char* names, int value, int driver = kSimulator, float scale = 0) {
    auto* node = new CPlcNodeConfig;
    SetNode(*node, names, scale);
    node->m_driver.plcType = driver;
    node->m_driver.text1 = "constant";
    node->m_driver.value2 = value * 1000;
    Options().m_plcNodes.AddTail(node);
    return *node;
  }
  std::string GivenBefore() {
    CStringArray names;
    return m_stage.PreGetInitialVarNames(names) ? Join(names) : "none";
  }
};

TEST_F(LogInput, ReadsNodesWithADriverInListOrderAndPreprocessesThem) {
  EXPECT_EQ(m_stage.Open(), 0);
  Add("none", 9, kNoDriver);
  EXPECT_EQ(m_stage.Open(), 0);
  EXPECT_EQ(m_recorder.Take(), "");
  Add("a1 a2", 1);
  Add("b", 2, kSimulator, 10);
  Add("none", 9, kNoDriver);
  Add("c", 3);
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given() + ": " + Read(), "a1 a2 b c: 1 1 20 3");
  EXPECT_NE(m_sample.m_time.time, 0);
  Options().m_preprocess = 1;
  Options().m_preEquations.Add("sum = b + c");
  Options().m_preNewVars.Add("sum");
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given() + ": " + Read(), "sum: 23");
}

TEST_F(LogInput, TheNamesBeforePreprocessingAndThePeriodNeedNoPlcAndAClosedStage) {
  CPlcNodeConfig& node = Add("a", 1);
  node.m_driver.text1 = "no such waveform";
  Options().m_preprocess = 1;
  EXPECT_EQ(GivenBefore(), "a");
  EXPECT_EQ(m_stage.GetScanPeriod(), 5000u);
  Options().m_asFastAsPossible = 2;
  EXPECT_EQ(m_stage.GetScanPeriod(), 0u);
  EXPECT_EQ(m_stage.Open(), 0);
  node.m_driver.text1 = "constant";
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(GivenBefore(), "none");
  EXPECT_EQ(Given() + ": " + Read(), ": ");  // no new variables: samples without values
}

TEST_F(LogInput, AReplayShowsItsProgress) {
  Options().m_simulating = 1;
  EXPECT_EQ(m_stage.Open(), 0);
  WriteBytes(m_dir / "log", ExampleLog());
  for (int i = 0; i < 2; ++i) Options().m_inputFiles.AddTail(m_dir / "log");
  EXPECT_EQ(GivenBefore(), "Temp Flow");
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given(), "Temp Flow");
  std::ostringstream progress;
  for (int i = 0; i < 5; ++i) {
    progress << Read() << ": ";
    progress << m_stage.FilesRead() << " " << m_stage.PercentCompleted() << " " << m_stage.PartOfLog() << " "
             << m_stage.IsFinished() << "|";
  }
  EXPECT_EQ(progress.str(),
            "1 -2: 0 0 0.5 0|2 0: 0 0 1 0|1 -2: 1 0.5 0.5 0|2 0: 1 0.5 1 0|failed: 1 0.5 0 1|");
  m_stage.Close();
  EXPECT_EQ(m_stage.IsFinished(), 0);
  EXPECT_EQ(m_stage.TotalFilesToRead(), 0u);
}

TEST_F(LogInput, TheWorkerPostsTheResultOfEachReadAndAFailureLeavesTheStageOpen) {
  SetNode(Add("a", 1), "a", 0, true);
  EXPECT_EQ(m_stage.SetCallBack(1, &m_queue, kMessage), 1);
  EXPECT_EQ(Read(), "failed");  // a closed stage starts no worker and posts nothing
  EXPECT_EQ(Posted(20), -1);
  ASSERT_EQ(m_stage.Open(), 1);
  for (const int result : {1, 0, 1}) {
    EXPECT_EQ(m_stage.Read(m_sample), 1);
    EXPECT_EQ(Posted(), result);
    CSingleLock lock(&m_sample.m_lock, true);
    EXPECT_EQ(Values(m_sample.m_values), "1");
  }
}

}  // namespace
}  // namespace vastra
