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

class PlcWrite : public testing::Test {
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
  // Writes values on a worker: the result in its message.
  std::string WriteAndWait(std::initializer_list<float> values) {
    CLogSample sample = Sample(values);
    CMessage message;
    EXPECT_EQ(1, m_stage.Write(sample));
    if (!m_queue.Wait(message, kLong)) return "nothing";
    EXPECT_EQ(kMessage, message.m_message);
    EXPECT_EQ(0, message.m_lparam);
    return std::to_string(message.m_wparam);
  }

  static int s_lastStation;
  const int m_station = ++s_lastStation;  // its registers are all 0
  CRecorder m_recorder;
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
  ASSERT_EQ(1, Open({"a", "b", "c"}));
  EXPECT_EQ(1, Write({1, 2, 3}));
  EXPECT_EQ("3", Registers(0));
  EXPECT_EQ("20 0 1", Registers(1, 3));
}

// Notes the kinds of the links that a sample passes: those of one node have one name.
class CKinds : public CRecorder {
 public:
  void Send(const char* type, const char* name, char function, char severity, const char* text) override {
    if (function == functionWrite && severity == severityBegin)
      m_kinds += std::string(type) + " " + name + "\n";
    CRecorder::Send(type, name, function, severity, text);
  }
  std::string m_kinds;
};

TEST_F(PlcWrite, AMapperStandsInFrontOfScalerNamerAndDriver) {
  CKinds kinds;
  Add("A", {"a"});
  Add("B", {"a"});
  ASSERT_EQ(1, Open({"a"}));
  EXPECT_EQ(1, Write({1}));
  m_stage.Close();
  const std::string node =
      "CMapperLink Simulator\nCScalerLink Simulator\nCNamerLink Simulator\nCPlcLink Simulator";
  EXPECT_EQ(node + " (A)\n" + node + " (B)\n", kinds.m_kinds);
}

TEST_F(PlcWrite, ComputerNodeIsComparedAsANumber) {
  const struct {
    std::initializer_list<const char*> names;
    std::initializer_list<float> values;
    UINT number;
    bool written;
  } kCases[] = {
      {{"x"}, {1}, 7, true},
      {{"x", "computernode"}, {1, 2}, 7, true},
      {{"x", "ComputerNode "}, {1, 2}, 7, true},
      {{"x", "ComputerNode"}, {1, 2}, 2, true},
      {{"x", "ComputerNode"}, {1, 2.5f}, 2, false},
      {{"x", "ComputerNode"}, {1, 0}, 0, true},
      {{"x", "ComputerNode"}, {1, -1}, 0xFFFFFFFFu, false},
      {{"x", "ComputerNode"}, {1, 16777216.0f}, 16777216, true},
      {{"x", "ComputerNode"}, {1, 16777216.0f}, 16777217, false},
      {{"x", "ComputerNode"}, {1, 4294967296.0f}, 0xFFFFFFFFu, false},
      {{"x", "ComputerNode", "ComputerNode"}, {1, 3, 2}, 2, false},
      {{"ComputerNode", "x"}, {2, 1}, 2, true},
      {{"x", "ComputerNode"}, {1}, 0, false},  // too short to tell
  };
  Add("A", {"x"});
  for (const auto& row : kCases) {
    SCOPED_TRACE(Join(Names(row.names)) + " " + std::to_string(row.number));
    m_stage.SetCallBack(0, nullptr, 0);
    ASSERT_EQ(1, Open({"x"}));
    EXPECT_EQ(1, Write({0}));
    ASSERT_EQ(1, Open(row.names));
    m_stage.SetNodeNumber(row.number);
    EXPECT_EQ(1, Write(row.values));
    EXPECT_EQ(row.written ? "1" : "0", Registers(0));
    m_stage.SetCallBack(1, &m_queue, kMessage);
    EXPECT_EQ("1", WriteAndWait(row.values));
    EXPECT_EQ(row.written ? "1" : "0", Registers(0));
  }
}

TEST_F(PlcWrite, AFailureStopsThePassButNotTheWorkerAndTheNextSampleTriesAll) {
  Add("A", {"x"});
  CPlcNodeConfig& second = Add("B", {"x"});
  Add("C", {"x"});
  second.m_driver.value4 = 2;  // each second call fails
  second.m_driver.value5 = kTimeout;
  for (const int threaded : {0, 1}) {
    m_stage.SetCallBack(threaded, &m_queue, kMessage);
    ASSERT_EQ(1, Open({"x"}));
    for (const int x : {1, 2, 3}) {
      const auto value = static_cast<float>(x);
      m_recorder.Take();
      EXPECT_EQ(x == 2 ? "0" : "1", threaded ? WriteAndWait({value}) : std::to_string(Write({value})));
      EXPECT_EQ(x == 2 ? "Write Error Simulator (B) Timeout error.\n"
                         "Write Error Simulator Could not write to component.\n"
                         "Write Error Simulator Could not write to component.\n"
                         "Write Error Simulator Could not write to component.\n"
                       : "",
                m_recorder.TakeFaults());
      EXPECT_EQ(std::to_string(x), Registers(0));
      EXPECT_EQ(x == 2 ? "1" : std::to_string(x), Registers(1));
      EXPECT_EQ(x == 2 && !threaded ? "1" : std::to_string(x), Registers(2));
    }
  }
}

TEST_F(PlcWrite, ADisabledStageOpensWithoutNodesAndStaysSoUntilItOpensAgain) {
  Add("A", {"x"}).m_driver.plcType = kNoDriver;
  Options().m_disableWriting = 1;
  ASSERT_EQ(1, Open({"x"}));
  for (const int disabled : {1, 0}) {
    Options().m_disableWriting = disabled;
    m_stage.SetCallBack(0, nullptr, 0);
    EXPECT_EQ(1, Write({1}));
    m_stage.SetCallBack(1, &m_queue, kMessage);
    EXPECT_EQ("1", WriteAndWait({1}));
  }
  EXPECT_EQ(0, Open({"x"}));
  EXPECT_EQ("", m_recorder.TakeFaults());
  Options().m_nodes.GetHead()->m_node.m_driver.plcType = kSimulator;
  ASSERT_EQ(1, Open({"x"}));
  for (const int disabled : {0, 1, 0}) {
    const int x = 2 + disabled;
    Options().m_disableWriting = disabled;
    EXPECT_EQ("1", WriteAndWait({static_cast<float>(x)}));
    EXPECT_EQ("2", Registers(0));
  }
  CMessage message;
  EXPECT_EQ(0, m_queue.Wait(message, 20)) << "one message for each sample";
}

TEST_F(PlcWrite, ANodeThatDoesNotOpenLeavesNone) {
  const struct {
    int plcType;
    const char *text, *fault;
  } kCases[] = {
      {kNoDriver, "", ""},
      {kSimulator, "nonsense", "Open Fatal Simulator (B) Simulator: "},
  };
  CMessage message;
  Add("A", {"x"});
  CPlcNodeConfig& second = Add("B", {"x"});
  Add("C", {"x"});
  m_stage.SetCallBack(1, &m_queue, kMessage);
  for (const auto& row : kCases) {
    second.m_driver.plcType = row.plcType;
    second.m_driver.text1 = row.text;
    EXPECT_EQ(0, Open({"x"}));
    const std::string faults = m_recorder.TakeFaults();
    EXPECT_EQ(row.fault, faults.substr(0, std::string(row.fault).size()));
    EXPECT_EQ(*row.fault == 0, faults.empty());
    EXPECT_EQ(0, Write({1}));
    EXPECT_EQ(0, m_queue.Wait(message, 20)) << "a closed stage starts no worker and posts nothing";

    CPlcSingleOutput output;
    CStringArray names = Names({"x"});
    output.GetOptions()->m_node = second;
    EXPECT_EQ(row.plcType == kSimulator, output.PreOpen(names)) << "no PLC is contacted";
    EXPECT_EQ(0, output.Open(names));
  }
}

TEST_F(PlcWrite, AStageWithoutNodesTakesEverySample) {
  ASSERT_EQ(1, Open({"x"}));
  EXPECT_EQ(1, Write({1}));
  m_stage.SetCallBack(1, &m_queue, kMessage);
  EXPECT_EQ("1", WriteAndWait({1}));
}

TEST_F(PlcWrite, TheWorkerWaitsForTheSampleAndKeepsTheTargetOfItsStart) {
  CMessageQueue other;
  CMessage message;
  CLogSample sample = Sample({5});
  Add("A", {"x"});
  m_stage.SetCallBack(1, &m_queue, kMessage);
  ASSERT_EQ(1, Open({"x"}));
  {
    CSingleLock lock(&sample.m_lock, true);
    EXPECT_EQ(1, m_stage.Write(sample));
    EXPECT_EQ(0, m_queue.Wait(message, 20));
    EXPECT_EQ("0", Registers(0));
    m_stage.SetCallBack(1, &other, kMessage + 1);
    sample.m_values[0] = 6;
  }
  ASSERT_EQ(1, m_queue.Wait(message, kLong));
  EXPECT_EQ(kMessage, message.m_message);
  EXPECT_EQ("6", Registers(0));
  EXPECT_EQ(0, other.Wait(message, 20));
}

TEST_F(PlcWrite, EachSampleOfABurstIsWrittenAndHasItsMessage) {
  constexpr int kSamples = 40;
  CMessage message;
  std::vector<CLogSample> samples(kSamples, Sample({1}));  // the stage's lock alone keeps the workers apart
  CPlcNodeConfig& node = Add("A", {"x"});
  node.m_driver.value4 = 4;
  node.m_driver.value5 = kTimeout;
  m_stage.SetCallBack(1, &m_queue, kMessage);
  ASSERT_EQ(1, Open({"x"}));
  for (CLogSample& sample : samples) EXPECT_EQ(1, m_stage.Write(sample));
  int written = 0;
  for (int i = 0; i < kSamples; ++i) {
    ASSERT_EQ(1, m_queue.Wait(message, kLong));
    written += static_cast<int>(message.m_wparam);
  }
  EXPECT_EQ(kSamples - kSamples / 4, written);
  EXPECT_EQ(0, m_queue.Wait(message, 20));
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
    ASSERT_NE(nullptr, worker);
    worker->m_pStage = row.stage;
    worker->m_pSample = row.sample;
    worker->m_notifyWnd = &m_queue;
    worker->ResumeThread();
    ASSERT_EQ(1, m_queue.Wait(message, kLong));
    EXPECT_EQ(row.result, message.m_wparam);
  }
}

}  // namespace
}  // namespace vastra
