// The input stage on the simulator's driver module and on logs.
#include "vastra/stages/log_input.h"
#include "tests/stages/samples.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {
namespace {

constexpr int kSimulator = 9001;
constexpr int kNoDriver = 1;
constexpr int kTimeout = 109;

class LogInput : public CStageFixture {
 protected:
  CInputConfig& Options() { return *m_stage.GetOptions(); }

  // A node whose values are all `value`.
  CPlcNodeConfig& Add(const char* name, int driver, int value, std::initializer_list<const char*> names) {
    auto* node = new CPlcNodeConfig;
    node->m_nodeName = name;
    node->m_driver.plcType = driver;
    node->m_driver.text1 = "constant";
    node->m_driver.value2 = value * 1000;
    node->m_driver.variableCount = static_cast<UINT>(names.size());
    node->m_varNames = Names(names);
    Options().m_plcNodes.AddTail(node);
    return *node;
  }
  // Makes each second read of node fail.
  static void Fail(CPlcNodeConfig& node) { node.m_driver.value4 = 2, node.m_driver.value5 = kTimeout; }

  std::string Given() {
    CStringArray names;
    return m_stage.GetVarNames(names) ? Join(names) : "none";
  }
  std::string GivenBefore() {
    CStringArray names;
    return m_stage.PreGetInitialVarNames(names) ? Join(names) : "none";
  }
  std::string Read() { return m_stage.Read(m_sample) ? Values(m_sample) : "failed"; }

  // Adds a log with one variable x, one sample a second from `first` on.
  void Replay(const char* name, std::int32_t first, std::initializer_list<float> values) {
    CSampleStore samples;
    for (const float value : values) samples.Append(Sample({value}, first++));
    CLogWriter writer;
    writer.SetNames(Names({"x"}));
    CFile file(m_dir / name, CFile::modeWrite | CFile::modeCreate);
    writer.Write(file, samples);
    Options().m_inputFiles.AddTail(m_dir / name);
  }

  CLogInput m_stage;
  CLogSample m_sample;
};

TEST_F(LogInput, ReadsItsNodesInListOrderAndPreprocessesThem) {
  Add("A", kSimulator, 1, {"a1", "a2"});
  CScalerConfigNode rule;
  rule.m_varName = "b";
  rule.m_scale = 10;
  Add("B", kSimulator, 2, {"b"}).m_scaler.m_nodes.Add(rule);
  Add("C", kSimulator, 3, {"c"});
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given(), "a1 a2 b c");
  EXPECT_EQ(Read(), "1 1 20 3");
  EXPECT_NE(m_sample.m_time.time, 0);
  delete Options().m_plcNodes.RemoveHead();
  Options().m_preprocess = 1;
  Options().m_preEquations.Add("sum = b + c");
  Options().m_preNewVars.Add("sum");
  ASSERT_EQ(m_stage.Open(), 1);
  m_recorder.Take();
  EXPECT_EQ(Read(), "23");
  EXPECT_EQ(m_recorder.Take(),
            "Read Begin InputPreprocessEquatorLink\nRead Begin Concat Simulator\n"
            "Read Begin Simulator\nRead Begin Simulator\nRead Begin Simulator (B)\n"
            "Read End Simulator (B)\nRead End Simulator\nRead End Simulator\n"
            "Read Begin Simulator\nRead Begin Simulator\nRead Begin Simulator (C)\n"
            "Read End Simulator (C)\nRead End Simulator\nRead End Simulator\n"
            "Read End Concat Simulator\nRead End InputPreprocessEquatorLink\n");
}

TEST_F(LogInput, ANodeWithoutADriverIsLeftOutAndNoNodeIsAFailureWithoutMessages) {
  EXPECT_EQ(m_stage.Open(), 0);
  Add("X", kNoDriver, 9, {"x"});
  EXPECT_EQ(m_stage.Open(), 0);
  EXPECT_EQ(m_recorder.Take(), "");
  Add("A", kSimulator, 1, {"a"});
  Add("Y", kNoDriver, 9, {"y"});
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given() + ": " + Read(), "a: 1");
}

TEST_F(LogInput, ANameOfTwoNodesFailsTheOpenAndLeavesNothing) {
  for (const char* name : {"a", "b", "a"}) Add(name, kSimulator, 1, {name});
  EXPECT_EQ(m_stage.Open(), 0);
  EXPECT_EQ(m_recorder.TakeFaults(), "Open Fatal Concat Simulator Variable names were duplicated.\n");
  EXPECT_EQ(Given() + ": " + Read(), "none: failed");
}

TEST_F(LogInput, TheNamesBeforePreprocessingNeedNoPlcAndAClosedStage) {
  CPlcNodeConfig& node = Add("A", kSimulator, 1, {"a"});
  node.m_driver.text1 = "no such waveform";
  Options().m_preprocess = 1;
  EXPECT_EQ(GivenBefore(), "a");
  EXPECT_EQ(m_stage.Open(), 0);
  node.m_driver.text1 = "constant";
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(GivenBefore(), "none");
  EXPECT_EQ(Given() + ": " + Read(), ": ");  // no new variables: samples without values
}

TEST_F(LogInput, AReplayShowsItsProgress) {
  Options().m_simulating = 1;
  EXPECT_EQ(m_stage.Open(), 0);
  Replay("late", 2000, {3});
  Replay("early", 1000, {1, 2});
  EXPECT_EQ(GivenBefore(), "x");
  ASSERT_EQ(m_stage.Open(), 1);
  EXPECT_EQ(Given(), "x");
  const struct {
    const char* value;
    UINT files;
    float part;
    int finished;
  } kReads[] = {{"1", 0, 0.5f, 0}, {"2", 0, 1, 0}, {"3", 1, 1, 0}, {"failed", 1, 0, 1}};
  for (const auto& read : kReads) {
    EXPECT_EQ(Read(), read.value);
    EXPECT_EQ(m_stage.FilesRead(), read.files);
    EXPECT_EQ(m_stage.PercentCompleted(), static_cast<float>(read.files) / 2);
    EXPECT_EQ(m_stage.PartOfLog(), read.part) << read.value;
    EXPECT_EQ(m_stage.IsFinished(), read.finished);
    EXPECT_EQ(m_stage.TotalFilesToRead(), 2u);
  }
  m_stage.Close();
  EXPECT_EQ(m_stage.IsFinished(), 0);
  EXPECT_EQ(m_stage.TotalFilesToRead(), 0u);
}

TEST_F(LogInput, TheWorkerPostsTheResultOfEachReadAndAFailureLeavesTheStageOpen) {
  constexpr UINT kMessage = 77;
  CMessageQueue queue;
  CMessage message;
  Fail(Add("A", kSimulator, 1, {"a"}));
  EXPECT_EQ(m_stage.SetCallBack(1, &queue, kMessage), 1);
  EXPECT_EQ(m_stage.Read(m_sample), 0);  // a closed stage starts no worker and posts nothing
  EXPECT_EQ(queue.Wait(message, 20), 0);
  ASSERT_EQ(m_stage.Open(), 1);
  for (const WPARAM result : {1u, 0u, 1u}) {
    EXPECT_EQ(m_stage.Read(m_sample), 1);
    ASSERT_EQ(queue.Wait(message, 10000), 1);
    EXPECT_EQ(message.m_message, kMessage);
    EXPECT_EQ(message.m_wparam, result);
    EXPECT_EQ(message.m_lparam, 0);
    CSingleLock lock(&m_sample.m_lock, true);
    EXPECT_EQ(m_sample.m_values.GetSize(), 1);
  }
}

TEST_F(LogInput, TheScanPeriodNeedsNoOpenStage) {
  EXPECT_EQ(m_stage.GetScanPeriod(), 5000u);
  Options().m_asFastAsPossible = 2;
  EXPECT_EQ(m_stage.GetScanPeriod(), 0u);
  Options().m_autoStart = 7;
  EXPECT_EQ(m_stage.GetAutoStart(), 1);
  EXPECT_EQ(m_stage.PartialWrite(m_sample), 0);
}

}  // namespace
}  // namespace vastra
