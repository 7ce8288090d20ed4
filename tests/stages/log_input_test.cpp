// The input stage over the simulator's driver module and over logs.
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/stages/log_input.h"

namespace vastra {
namespace {

constexpr int kSimulator = 9001;
constexpr int kNoDriver = 1;
constexpr int kTimeout = 109;

class LogInput : public testing::Test {
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
    for (const char* varName : names) node->m_varNames.Add(varName);
    Options().m_plcNodes.AddTail(node);
    return *node;
  }

  std::string Names() {
    CStringArray names;
    if (!m_stage.GetVarNames(names)) return "none";
    return Join(names);
  }
  std::string Values() {
    if (!m_stage.Read(m_sample)) return "failed";
    std::string all;
    for (const float value : m_sample.m_values) all += std::to_string(static_cast<int>(value)) + " ";
    return all;
  }
  static std::string Join(const CStringArray& names) {
    std::string all;
    for (const CString& name : names) all += name.Std() + " ";
    return all;
  }

  // A log of samples with one variable x, one a second from `first` on.
  CString WriteLog(const char* name, std::int32_t first, std::initializer_list<float> values) {
    std::unique_ptr<CFileLink> link(CFileLink::Create(nullptr));
    auto* config = new CFileConfig;
    config->m_extension = ".rph";
    config->m_saveRp = 1;
    config->m_maxLogs = config->m_maxSamples = 100;
    config->m_directory = m_dir.Path();
    config->m_prefix = name;
    config->m_usePrefix = 1;
    config->m_varNames.Add("x");
    CLinkConfigList configs;
    configs.AddTail(config);
    EXPECT_EQ(1, link->Open(configs, CLink::modeWrite));
    for (const float value : values) {
      CLogSample sample;
      sample.m_time.time = first++;
      sample.m_values.Add(value);
      EXPECT_EQ(1, link->Write(sample));
    }
    EXPECT_EQ(1, link->Flush());
    return m_dir / (std::string(name) + "NoValue.rph").c_str();
  }

  CRecorder m_recorder;
  CTempDir m_dir;
  CLogInput m_stage;
  CLogSample m_sample;
};

TEST_F(LogInput, ThreeNodesGiveTheirValuesInListOrder) {
  Add("A", kSimulator, 1, {"a1", "a2"});
  CPlcNodeConfig& b = Add("B", kSimulator, 2, {"b"});
  CScalerConfigNode rule;
  rule.m_varName = "b";
  rule.m_scale = 10;
  b.m_scaler.m_nodes.Add(rule);
  Add("C", kSimulator, 3, {"c"});
  ASSERT_EQ(1, m_stage.Open());
  EXPECT_EQ("a1 a2 b c ", Names());
  EXPECT_EQ("1 1 20 3 ", Values());
  EXPECT_NE(0, m_sample.m_time.time);
}

TEST_F(LogInput, TheTraceOfAReadShowsTheChain) {
  Add("A", kSimulator, 1, {"a"});
  Add("B", kSimulator, 2, {"b"});
  Options().m_preprocess = 1;
  Options().m_preEquations.Add("sum = a + b");
  Options().m_preNewVars.Add("sum");
  ASSERT_EQ(1, m_stage.Open());
  m_recorder.Take();
  EXPECT_EQ("3 ", Values());
  EXPECT_EQ(
      "Read Begin InputPreprocessEquatorLink\nRead Begin Concat Simulator\n"
      "Read Begin Simulator\nRead Begin Simulator\nRead Begin Simulator (A)\n"
      "Read End Simulator (A)\nRead End Simulator\nRead End Simulator\n"
      "Read Begin Simulator\nRead Begin Simulator\nRead Begin Simulator (B)\n"
      "Read End Simulator (B)\nRead End Simulator\nRead End Simulator\n"
      "Read End Concat Simulator\nRead End InputPreprocessEquatorLink\n",
      m_recorder.Take());
}

TEST_F(LogInput, ANodeWithoutADriverIsLeftOutSilently) {
  EXPECT_EQ(0, m_stage.Open());
  Add("X", kNoDriver, 9, {"x"});
  EXPECT_EQ(0, m_stage.Open());
  Add("A", kSimulator, 1, {"a"});
  Add("Y", kNoDriver, 9, {"y"});
  EXPECT_EQ("", m_recorder.Take());
  ASSERT_EQ(1, m_stage.Open());
  EXPECT_EQ("a ", Names());
  EXPECT_EQ("1 ", Values());
}

TEST_F(LogInput, ANameOfTwoNodesFailsTheOpenAndLeavesNothing) {
  Add("A", kSimulator, 1, {"a"});
  Add("B", kSimulator, 2, {"b"});
  Add("C", kSimulator, 3, {"a"});
  EXPECT_EQ(0, m_stage.Open());
  EXPECT_EQ("Open Fatal Concat Simulator Variable names were duplicated.\n", m_recorder.TakeFaults());
  EXPECT_EQ("none", Names());
  EXPECT_EQ("failed", Values());
}

TEST_F(LogInput, NamesInFrontOfThePreprocessingNeedNoPlc) {
  Add("A", kSimulator, 1, {"a"}).m_driver.text1 = "no such waveform";
  Options().m_preprocess = 1;
  CStringArray names;
  EXPECT_EQ(1, m_stage.PreGetInitialVarNames(names));
  EXPECT_EQ("a ", Join(names));
  EXPECT_EQ(0, m_stage.Open());
  Options().m_plcNodes.GetHead()->m_driver.text1 = "constant";
  ASSERT_EQ(1, m_stage.Open());
  EXPECT_EQ(0, m_stage.PreGetInitialVarNames(names));
  EXPECT_EQ("", Names());  // preprocessing that gives nothing out: samples without values
  EXPECT_EQ("", Values());
}

TEST_F(LogInput, AReplayGoesByTimeAndShowsItsProgress) {
  Options().m_simulating = 1;
  EXPECT_EQ(0, m_stage.Open());
  Options().m_inputFiles.AddTail(WriteLog("late", 2000, {3}));
  Options().m_inputFiles.AddTail(WriteLog("early", 1000, {1, 2}));
  CStringArray names;
  EXPECT_EQ(1, m_stage.PreGetInitialVarNames(names));
  EXPECT_EQ("x ", Join(names));
  ASSERT_EQ(1, m_stage.Open());
  EXPECT_EQ("x ", Names());
  EXPECT_EQ("1 ", Values());
  EXPECT_EQ(1000, m_sample.m_time.time);
  EXPECT_EQ("2 ", Values());
  EXPECT_EQ(0u, m_stage.FilesRead());
  EXPECT_EQ(2u, m_stage.TotalFilesToRead());
  EXPECT_EQ("3 ", Values());
  EXPECT_FLOAT_EQ(0.5f, m_stage.PercentCompleted());
  EXPECT_EQ(0, m_stage.IsFinished());
  EXPECT_EQ("failed", Values());
  EXPECT_EQ(1, m_stage.IsFinished());
  m_stage.Close();
  EXPECT_EQ(0, m_stage.IsFinished());
  EXPECT_EQ(0u, m_stage.TotalFilesToRead());
}

TEST_F(LogInput, AFailedReadLeavesTheStageOpen) {
  CPlcNodeConfig& node = Add("A", kSimulator, 1, {"a"});
  node.m_driver.value4 = 2;
  node.m_driver.value5 = kTimeout;
  ASSERT_EQ(1, m_stage.Open());
  EXPECT_EQ("1 ", Values());
  m_recorder.Take();
  EXPECT_EQ("failed", Values());
  EXPECT_EQ(
      "Read Error Simulator (A) Timeout error.\nRead Error Simulator Could not read component.\n"
      "Read Error Simulator Could not read component.\n",
      m_recorder.TakeFaults());
  EXPECT_EQ("1 ", Values());
}

TEST_F(LogInput, TheWorkerPostsTheResultOfEachRead) {
  constexpr UINT kMessage = 77;
  CMessageQueue queue;
  CMessage message;
  CPlcNodeConfig& node = Add("A", kSimulator, 1, {"a"});
  node.m_driver.value4 = 2;
  node.m_driver.value5 = kTimeout;
  EXPECT_EQ(1, m_stage.SetCallBack(1, &queue, kMessage));
  EXPECT_EQ(0, m_stage.Read(m_sample));  // closed: no worker, no message
  EXPECT_EQ(0, queue.Wait(message, 20));
  ASSERT_EQ(1, m_stage.Open());
  for (WPARAM result = 1; result < 2; --result) {
    EXPECT_EQ(1, m_stage.Read(m_sample));
    ASSERT_EQ(1, queue.Wait(message, 10000));
    EXPECT_EQ(kMessage, message.m_message);
    EXPECT_EQ(result, message.m_wparam);
    EXPECT_EQ(0, message.m_lparam);
    CSingleLock lock(&m_sample.m_lock, true);
    EXPECT_EQ(1, m_sample.m_values.GetSize());
  }
}

TEST_F(LogInput, AWorkerWithoutAChainPostsFailure) {
  CMessageQueue queue;
  CMessage message;
  for (CLogInput* stage : {static_cast<CLogInput*>(nullptr), &m_stage}) {
    auto* worker = static_cast<CInputThread*>(AfxBeginThread(RUNTIME_CLASS(CInputThread)));
    ASSERT_NE(nullptr, worker);
    worker->m_pStage = stage;
    worker->m_pSample = &m_sample;
    worker->m_notifyWnd = &queue;
    worker->ResumeThread();
    ASSERT_EQ(1, queue.Wait(message, 10000));
    EXPECT_EQ(0u, message.m_wparam);
  }
}

TEST_F(LogInput, TheScanPeriodNeedsNoOpenStage) {
  EXPECT_EQ(5000u, m_stage.GetScanPeriod());
  Options().m_asFastAsPossible = 2;
  EXPECT_EQ(0u, m_stage.GetScanPeriod());
  Options().m_autoStart = 7;
  EXPECT_EQ(1, m_stage.GetAutoStart());
  EXPECT_EQ(0, m_stage.PartialWrite(m_sample));
}

}  // namespace
}  // namespace vastra
