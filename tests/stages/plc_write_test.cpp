// Writing to PLCs: which nodes get which values of a sample, and when. The nodes are registers of a station
// of the simulator.
#include "tests/drivers/driver_node.h"
#include "tests/stages/samples.h"
#include "vastra/stages/plc_multi_output.h"

namespace vastra {
namespace {

constexpr int kSimulator = 9001;
constexpr int kNoDriver = 1;
constexpr int kTimeout = 109;
constexpr UINT kMessage = 77;
constexpr int kLong = 10000;

class PlcWrite : public CStageFixture {
 protected:
  // A node for names, with its values in registers from 10 times its place on.
  CPlcNodeConfig& Add(const char* name, std::initializer_list<const char*> names) {
    auto* config = new CPlcSingleConfig;
    CPlcNodeConfig& node = config->m_node;
    node.m_nodeName = name;
    node.m_varNames = Names(names);
    node.m_driver.plcType = kSimulator;
    node.m_driver.station = m_station;
    node.m_driver.registerAddress = static_cast<int>(10 * Options().m_nodes.GetCount());
    node.m_driver.variableCount = static_cast<UINT>(names.size());
    Options().m_nodes.AddTail(config);
    return node;
  }
  CPlcMultiConfig& Options() { return *m_stage.GetOptions(); }

  int Open(std::initializer_list<const char*> names) {
    CStringArray given = Names(names);
    return m_stage.Open(given);
  }
  int Write(std::initializer_list<float> values) {
    CLogSample sample = Sample(values);
    return m_stage.Write(sample);
  }
  // The first count registers of the node at place.
  std::string Registers(int place, UINT count = 1) {
    DriverConfig config;
    config.station = m_station;
    config.registerAddress = 10 * place;
    CLogSample sample;
    for (const float value : CDriverNode(m_recorder, kSimulator, config, count).Read())
      sample.m_values.Add(value);
    return Values(sample);
  }
  // Writes values on a worker and returns the result in its message.
  std::string WriteAndWait(std::initializer_list<float> values) {
    CLogSample sample = Sample(values);
    CMessage message;
    EXPECT_EQ(m_stage.Write(sample), 1);
    if (!m_queue.Wait(message, kLong)) return "nothing";
    EXPECT_EQ(message.m_message, kMessage);
    EXPECT_EQ(message.m_lparam, 0);
    return std::to_string(message.m_wparam);
  }

  static int s_lastStation;
  const int m_station = ++s_lastStation;  // its registers are all 0
  CMessageQueue m_queue;
  CPlcMultiOutput m_stage;
};
int PlcWrite::s_lastStation = 500;

TEST_F(PlcWrite, EachNodeGetsItsVariablesByNameScaled) {
  Add("A", {"c"});
  CScalerConfigNode rule;
  rule.m_varName = "b";
  rule.m_scale = 10;
  Add("B", {"b", "C", "a"}).m_scaler.m_nodes.Add(rule);
  ASSERT_EQ(Open({"a", "b", "c"}), 1);
  EXPECT_EQ(Write({1, 2, 3}), 1);
  EXPECT_EQ(Registers(0), "3");
  EXPECT_EQ(Registers(1, 3), "20 0 1");
}

TEST(PlcEnable, ComparesComputerNodeAsANumber) {
  const struct {
    std::initializer_list<const char*> names;
    std::initializer_list<float> values;
    UINT number;
    bool written;
  } kCases[] = {
      {{"x"}, {1}, 7, true},
      {{"x", "computernode"}, {1, 2}, 7, true},
      {{"x", "ComputerNode"}, {1, 2}, 2, true},
      {{"x", "ComputerNode"}, {1, 2.5f}, 2, false},
      {{"x", "ComputerNode"}, {1, 0}, 0, true},
      {{"x", "ComputerNode"}, {1, -1}, 0xFFFFFFFFu, false},
      {{"x", "ComputerNode"}, {1, 16777216.0f}, 16777217, false},
      {{"x", "ComputerNode"}, {1, 4294967296.0f}, 0xFFFFFFFFu, false},
      {{"x", "ComputerNode", "ComputerNode"}, {1, 3, 2}, 2, false},
      {{"ComputerNode", "x"}, {2, 1}, 2, true},
      {{"x", "ComputerNode"}, {1}, 0, false},  // too short to tell
  };
  for (const auto& row : kCases) {
    CPlcEnable enable;
    CStringArray names = Names(row.names);
    CLogSample sample = Sample(row.values);
    enable.Open(names);
    EXPECT_EQ(enable.CheckIfWrite(sample, row.number), row.written) << Join(names) << " " << row.number;
  }
}

TEST_F(PlcWrite, ASampleForAnotherComputerIsNotWrittenAndHasItsMessage) {
  Add("A", {"x"});
  ASSERT_EQ(Open({"x", "ComputerNode"}), 1);
  m_stage.SetNodeNumber(2);
  EXPECT_EQ(Write({1, 2}) + Write({3, 4}), 2);
  EXPECT_EQ(Registers(0), "1");
  m_stage.SetCallBack(1, &m_queue, kMessage);
  EXPECT_EQ(WriteAndWait({3, 4}) + WriteAndWait({5, 2}), "11");
  EXPECT_EQ(Registers(0), "5");
}

TEST_F(PlcWrite, AFailureStopsThePassButNotTheWorkerAndTheNextSampleTriesAll) {
  Add("A", {"x"});
  CPlcNodeConfig& second = Add("B", {"x"});
  Add("C", {"x"});
  second.m_driver.value4 = 2;  // each second call fails
  second.m_driver.value5 = kTimeout;
  for (const int threaded : {0, 1}) {
    m_stage.SetCallBack(threaded, &m_queue, kMessage);
    ASSERT_EQ(Open({"x"}), 1);
    for (const int x : {1, 2, 3}) {
      const auto value = static_cast<float>(x);
      m_recorder.Take();
      EXPECT_EQ(threaded ? WriteAndWait({value}) : std::to_string(Write({value})), x == 2 ? "0" : "1");
      EXPECT_EQ(m_recorder.TakeFaults().starts_with("Write Error Simulator (B) Timeout error.\n"), x == 2);
      EXPECT_EQ(Registers(0), std::to_string(x));
      EXPECT_EQ(Registers(1), x == 2 ? "1" : std::to_string(x));
      EXPECT_EQ(Registers(2), x == 2 && !threaded ? "1" : std::to_string(x));
    }
  }
}

TEST_F(PlcWrite, DisablingTakesEffectWithTheNextSampleAndEnablingWithTheNextOpen) {
  CMessage message;
  DriverConfig& driver = Add("A", {"x"}).m_driver;
  driver.plcType = kNoDriver;
  Options().m_disableWriting = 1;
  ASSERT_EQ(Open({"x"}), 1);
  m_stage.SetCallBack(1, &m_queue, kMessage);
  for (const int disabled : {1, 0}) {
    Options().m_disableWriting = disabled;
    EXPECT_EQ(WriteAndWait({1}), "1");
  }
  EXPECT_EQ(Open({"x"}), 0);
  driver.plcType = kSimulator;
  ASSERT_EQ(Open({"x"}), 1);
  for (const int disabled : {0, 1, 0}) {
    Options().m_disableWriting = disabled;
    EXPECT_EQ(WriteAndWait({static_cast<float>(2 + disabled)}), "1");
    EXPECT_EQ(Registers(0), "2");
  }
  EXPECT_EQ(m_queue.Wait(message, 20), 0) << "one message for each sample";
}

TEST_F(PlcWrite, ANodeThatDoesNotOpenLeavesNone) {
  CMessage message;
  Add("A", {"x"});
  DriverConfig& second = Add("B", {"x"}).m_driver;
  m_stage.SetCallBack(1, &m_queue, kMessage);
  for (const bool known : {false, true}) {
    second.plcType = known ? kSimulator : kNoDriver;
    second.text1 = "nonsense";
    EXPECT_EQ(Open({"x"}), 0);
    const std::string faults = m_recorder.TakeFaults();
    EXPECT_TRUE(known ? faults.starts_with("Open Fatal Simulator (B) Simulator: ") : faults.empty())
        << faults;
    EXPECT_EQ(Write({1}), 0);
    EXPECT_EQ(m_queue.Wait(message, 20), 0) << "a closed stage starts no worker and posts nothing";

    CPlcSingleOutput output;
    CStringArray names = Names({"x"});
    output.GetOptions()->m_node.m_driver = second;
    output.GetOptions()->m_node.m_varNames = names;
    EXPECT_EQ(output.PreOpen(names), known) << "no PLC is contacted";
    EXPECT_EQ(output.Open(names), 0);
  }
}

TEST_F(PlcWrite, WorkersWaitForStageAndSampleAndKeepTheTargetOfTheirStart) {
  CMessageQueue other;
  CMessage message;
  CLogSample first = Sample({5}), second = Sample({7});
  Add("A", {"x"});
  m_stage.SetCallBack(1, &m_queue, kMessage);
  ASSERT_EQ(Open({"x"}), 1);
  {
    CSingleLock lock(&first.m_lock, true);
    EXPECT_EQ(m_stage.Write(first), 1);
    EXPECT_EQ(m_queue.Wait(message, 20), 0);
    EXPECT_EQ(m_stage.Write(second), 1);
    EXPECT_EQ(m_queue.Wait(message, 50), 0) << "the first worker has the stage";
    EXPECT_EQ(Registers(0), "0");
    m_stage.SetCallBack(1, &other, kMessage + 1);
    first.m_values[0] = 6;
  }
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(m_queue.Wait(message, kLong), 1);
    EXPECT_EQ(message.m_message, kMessage);
  }
  EXPECT_EQ(Registers(0), "7");
  EXPECT_EQ(other.Wait(message, 20), 0);
}

TEST_F(PlcWrite, AWorkerWithoutStageOrSamplePostsFailureAndOneWithoutNodesSuccess) {
  CLogSample sample = Sample({1});
  CMessage message;
  const struct {
    CPlcMultiOutput* stage;
    CLogSample* sample;
    WPARAM result;
  } kCases[] = {{nullptr, &sample, 0}, {&m_stage, nullptr, 0}, {&m_stage, &sample, 1}};
  for (const auto& row : kCases) {
    auto* worker = static_cast<CPlcWriteThread*>(AfxBeginThread(RUNTIME_CLASS(CPlcWriteThread)));
    ASSERT_NE(worker, nullptr);
    worker->m_pStage = row.stage;
    worker->m_pSample = row.sample;
    worker->m_notifyWnd = &m_queue;
    worker->ResumeThread();
    ASSERT_EQ(m_queue.Wait(message, kLong), 1);
    EXPECT_EQ(message.m_wparam, row.result);
  }
}

}  // namespace
}  // namespace vastra
