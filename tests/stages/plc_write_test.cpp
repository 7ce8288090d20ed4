// Writing to PLCs: which nodes, which are registers of a simulator, get which values of a sample, and when.
#include "tests/drivers/driver_node.h"
#include "tests/stages/samples.h"
#include "vastra/stages/plc_multi_output.h"

namespace vastra {
namespace {

class PlcWrite : public CStageFixture<CPlcMultiOutput> {
 protected:
  // A node with its values in the registers after those of the nodes before it.
  CPlcNodeConfig& Add(const char* names = "x", float scale = 0, bool fails = false) {
    auto* config = new CPlcSingleConfig;
    CPlcNodeConfig& node = config->m_node;
    SetNode(node, names, scale, fails);
    node.m_nodeName = CString(std::to_string(m_registers));
    node.m_driver.station = m_station;
    node.m_driver.registerAddress = static_cast<int>(m_registers);
    m_registers += node.m_driver.variableCount;
    Options().m_nodes.AddTail(config);
    return node;
  }
  std::string Registers() {
    DriverConfig config;
    config.station = m_station;
    return Values(CDriverNode(m_recorder, kSimulator, config, m_registers).Read());
  }
  int WriteAndWait(std::initializer_list<float> values) {
    CLogSample sample = Sample(kStart, values);
    return m_stage.Write(sample) ? Posted() : -2;
  }

  // One for each test, so that its registers are all 0.
  const int m_station = testing::UnitTest::GetInstance()->current_test_info()->line();
  UINT m_registers = 0;
};

TEST_F(PlcWrite, EachNodeGetsItsVariablesByNameScaledFromTheSamplesForThisComputer) {
  Add("c");
  Add("b C a", 10);
  ASSERT_EQ(Open("a b c ComputerNode"), 1);
  m_stage.SetNodeNumber(2);
  EXPECT_EQ(Write({1, 2, 3, 2}) + Write({4, 5, 6, 1}), 2);
  m_stage.SetCallBack(1, &m_queue, kMessage);
  EXPECT_EQ(WriteAndWait({4, 5, 6, 1}), 1);
  EXPECT_EQ(Registers(), "3 20 0 1");
}

TEST_F(PlcWrite, OnWorkersAFailureKeepsNothingFromTheOthersAndNoDeviceGetsNaN) {
  CNodeWorkers workers(CNodeWorkers::Span(60000), nullptr);
  for (const bool fails : {false, true, false}) Add("x", 0, fails);
  Add("y x");
  m_stage.SetWorkers(&workers);
  ASSERT_EQ(Open("x y"), 1);
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const std::tuple<float, float, const char*> kWrites[] = {
      {1, kNaN, "1 1 1 0 0"}, {2, 7, "2 1 2 7 2"}, {3, kNaN, "3 3 3 7 3"}, {kNaN, 8, "3 3 3 8 3"}};
  for (const auto& [x, y, registers] : kWrites) {
    Write({x, y});
    EXPECT_EQ(Registers(), registers);
  }
  EXPECT_EQ(Write({4, 9}), 1);
  m_recorder.Take();
  EXPECT_EQ(Write({4, kNaN}), 0);
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Write Error 1 is away: write: Timeout error.\n"
            "Write Warning Simulator (3) value 1 is not finite: the last one is written again\n");
  m_stage.Close();
}

TEST(PlcEnable, ComparesComputerNodeAsANumber) {
  const auto writes = [](const char* text, std::initializer_list<float> values, UINT number) {
    CPlcEnable enable;
    CStringArray names = Split(text);
    CLogSample sample = Sample(kStart, values);
    enable.Open(names);
    return enable.CheckIfWrite(sample, number);
  };
  EXPECT_EQ(writes("x computernode", {1, 2}, 7), 1);
  EXPECT_EQ(writes("ComputerNode x", {2, 1}, 2), 1);
  EXPECT_EQ(writes("x ComputerNode", {1, 2.5f}, 2), 0);
  EXPECT_EQ(writes("x ComputerNode", {1, -1}, 0xFFFFFFFFu), 0);
  EXPECT_EQ(writes("x ComputerNode", {1, 16777216.0f}, 16777217), 0);
  EXPECT_EQ(writes("x ComputerNode ComputerNode", {1, 3, 2}, 2), 0);
  EXPECT_EQ(writes("x ComputerNode", {1}, 0), 0) << "the sample has no such value";
}

TEST_F(PlcWrite, AFailureStopsThePassButNotTheWorkerAndTheNextSampleTriesAll) {
  for (const bool fails : {false, true, false}) Add("x", 0, fails);
  for (const int threaded : {0, 1}) {
    m_stage.SetCallBack(threaded, &m_queue, kMessage);
    ASSERT_EQ(Open(), 1);
    const char* const registers[] = {"1 1 1", threaded ? "2 1 2" : "2 1 1", "3 3 3"};
    for (const int x : {1, 2, 3}) {
      const auto value = static_cast<float>(x);
      m_recorder.Take();
      EXPECT_EQ(threaded ? WriteAndWait({value}) : Write({value}), x != 2);
      EXPECT_EQ(m_recorder.TakeFaults().starts_with("Write Error Simulator (1) Timeout error.\n"), x == 2);
      EXPECT_EQ(Registers(), registers[x - 1]);
    }
  }
}

TEST_F(PlcWrite, DisablingTakesEffectWithTheNextSampleAndEnablingWithTheNextOpen) {
  int& driver = Add().m_driver.plcType;
  driver = kNoDriver;
  m_stage.SetCallBack(1, &m_queue, kMessage);
  EXPECT_EQ(Open(), 0);
  Write({1});  // starts no worker, which would post a message
  Options().m_disableWriting = 1;
  ASSERT_EQ(Open(), 1) << "without its driver";
  EXPECT_EQ(WriteAndWait({1}), 1);
  Options().m_disableWriting = 0;
  EXPECT_EQ(WriteAndWait({1}), 1);
  driver = kSimulator;
  EXPECT_EQ(Registers(), "0");
  ASSERT_EQ(Open(), 1);
  EXPECT_EQ(WriteAndWait({2}), 1);
  Options().m_disableWriting = 1;
  EXPECT_EQ(WriteAndWait({3}), 1);
  EXPECT_EQ(Registers(), "2");
  EXPECT_EQ(Posted(20), -1) << "one message for each sample";
}

TEST_F(PlcWrite, WorkersWaitForStageAndSampleAndKeepTheTargetOfTheirStart) {
  CMessageQueue other;
  CMessage message;
  CLogSample first = Sample(kStart, {5}), second = Sample(kStart, {7});
  Add();
  m_stage.SetCallBack(1, &m_queue, kMessage);
  ASSERT_EQ(Open(), 1);
  {
    CSingleLock lock(&first.m_lock, true);
    EXPECT_EQ(m_stage.Write(first), 1);
    EXPECT_EQ(Posted(20), -1);
    EXPECT_EQ(m_stage.Write(second), 1);
    EXPECT_EQ(Posted(50), -1) << "the first worker has the stage";
    EXPECT_EQ(Registers(), "0");
    m_stage.SetCallBack(1, &other, kMessage + 1);
    first.m_values[0] = 6;
  }
  EXPECT_EQ(Posted() + Posted(), 2);
  EXPECT_EQ(Registers(), "7");
  EXPECT_EQ(other.Wait(message, 20), 0);
}

}  // namespace
}  // namespace vastra
