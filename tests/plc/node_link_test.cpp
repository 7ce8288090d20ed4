// A node that does not answer: what it leaves to the others, with workers and without. The nodes are links of
// the test that answer, fail or hang.
#include "vastra/plc/node_link.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <cmath>
#include <cstdlib>
#include <random>

#include "tests/support/recorder.h"
#include "vastra/core/concat_link.h"

namespace vastra {
namespace {

const CString kPlantType = "CPlant";

class CPlantConfig : public CLinkConfig {};

// What a device does. Tests change it between scans, the worker calls it.
struct CDevice {
  std::atomic<bool> opens{true}, answers{true};
  std::function<void()> work = [] {}, close = [] {};
  std::atomic<int> calls{0}, closed{0};
  float value = 1;
};

class CDeviceLink : public CLink {
 public:
  explicit CDeviceLink(CDevice& device) : CLink(kPlantType), m_device(device) {}
  ~CDeviceLink() override { CDeviceLink::Close(); }
  int Open(CTypedPtrList<CObList, CLinkConfig*>& configs, UINT mode) override {
    BeginOpen();
    delete configs.RemoveHead();
    if (!m_device.opens) return Fail(functionOpen, {severityFatal, "switched off"});
    m_mode = mode;
    return End(functionOpen);
  }
  void Close() override {
    if (m_mode != modeNotOpened) m_device.close();
    ++m_device.closed;
    m_mode = modeNotOpened;
  }
  int Read(CLogSample& sample) override {
    sample.m_time.time = static_cast<int>(m_device.value);
    sample.m_values.SetSize(1);
    sample.m_values[0] = m_device.value;
    return Transfer(functionRead);
  }
  int Write(CLogSample&) override { return Transfer(functionWrite); }
  int GetVarNames(CStringArray&) override { return 0; }

 private:
  int Transfer(char function) {
    ++m_device.calls;
    Begin(function);
    m_device.work();
    return m_device.answers ? End(function) : Fail(function, {severityError, "no reply"});
  }
  CDevice& m_device;
};

// Nodes A, B, ... in a chain of concat links as the input stage builds it.
class NodeLink : public testing::TestWithParam<bool> {
 protected:
  static constexpr CNodeWorkers::Span kShort{100}, kLong{60000};

  void Build(std::vector<EAbsent> absent, CNodeWorkers::Span patience = kLong, const char* line = "") {
    if (GetParam()) m_workers = std::make_unique<CNodeWorkers>(patience, [this] { return m_stops.load(); });
    m_group = std::make_shared<CNodeGroup>(m_workers.get());
    CLinkConfigList configs;
    for (std::size_t i = absent.size(); i-- > 0;) {
      auto* node = CNodeLink::Create(new CDeviceLink(m_devices[i]));
      node->m_name = CString(std::string(1, static_cast<char>('A' + i)));
      auto* config = new CNodeConfig;
      config->m_group = m_group;
      config->m_inner = [](CLinkConfigList& inner, UINT&) { inner.AddTail(new CPlantConfig); };
      config->m_varNames.Add(node->m_name);
      config->m_absent = absent[i];
      config->m_aliveVar = node->m_name + "Alive";
      config->m_line = line;
      CLink* rest = m_head.release();
      m_head.reset(rest ? static_cast<CLink*>(CConcatLink::Create(node, rest)) : node);
      configs.AddHead(config);
      if (!rest) continue;
      auto* concat = new CConcatConfig;
      concat->m_firstCount = 1;
      configs.AddHead(concat);
    }
    ASSERT_EQ(m_head->Open(configs, CLink::modeRead), 1) << m_recorder.Take();
    m_recorder.Take();
  }
  // "time: values", or "failed".
  std::string Read() {
    CLogSample sample;
    if (!m_head->Read(sample)) return "failed";
    std::string text = std::to_string(sample.m_time.time) + ":";
    for (const float value : sample.m_values)
      text += " " + (std::isnan(value) ? "nan" : std::to_string(static_cast<int>(value)));
    return text;
  }
  void Close() {
    m_group->Close();
    m_head.reset();
  }
  void OpenGate() {
    m_gate.test_and_set();
    m_gate.notify_all();
  }
  ~NodeLink() override {
    if (m_head) Close();
    OpenGate();
    m_workers.reset();
    while (CNodeWorkers::OverdueTasks() > 0) std::this_thread::yield();
  }

  CRecorder m_recorder;
  CDevice m_devices[51];
  std::atomic_flag m_gate;  // devices can wait until it is set
  std::atomic<bool> m_stops{false};
  std::unique_ptr<CNodeWorkers> m_workers;
  std::shared_ptr<CNodeGroup> m_group;
  std::unique_ptr<CLink> m_head;
};

INSTANTIATE_TEST_SUITE_P(WithAndWithoutWorkers, NodeLink, testing::Bool());

TEST_P(NodeLink, ThatDoesNotAnswerHasItsSubstituteAndOneLine) {
  for (int i = 0; i < 3; ++i) m_devices[i].value = static_cast<float>(i + 1);
  Build({EAbsent::hold, EAbsent::nan, EAbsent::nan});
  m_devices[0].answers = false;
  EXPECT_EQ(Read(), "2: nan 0 2 1 3 1") << "no value to hold yet, and the time of the first that is present";
  EXPECT_EQ(m_recorder.TakeFaults(), "Read Error A is away: read: no reply\n");
  EXPECT_EQ(Read(), "2: nan 0 2 1 3 1");
  EXPECT_EQ(m_recorder.TakeFaults(), "");
  m_devices[0].answers = true;
  EXPECT_EQ(Read(), "1: 1 1 2 1 3 1");
  EXPECT_EQ(m_recorder.TakeFaults(), "Read Notice A is back after 0:00:00\n");
  m_devices[0].answers = m_devices[1].answers = false;
  EXPECT_EQ(Read(), "3: 1 0 nan 0 3 1");
  m_devices[2].answers = false;
  m_recorder.Take();
  EXPECT_EQ(Read(), "failed") << "all are away";
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Read Error C is away: read: no reply\nRead Error A No node answers.\n"
            "Read Error Not named Could not read component.\n");
}

TEST_P(NodeLink, ThatMustAnswerFailsTheScanWithTheLinesOfItsLinks) {
  Build({EAbsent::nan, EAbsent::fail});
  m_devices[1].answers = false;
  EXPECT_EQ(Read(), "failed");
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Read Error Not named no reply\nRead Error B Could not read component.\n"
            "Read Error Not named Could not read component.\n");
  m_devices[1].answers = true;
  EXPECT_EQ(Read(), "1: 1 1 1 1");
}

TEST_P(NodeLink, ThatDoesNotOpenIsOpenedAgainLater) {
  m_devices[0].opens = false;
  Build({EAbsent::nan, EAbsent::nan});
  EXPECT_EQ(Read(), "1: nan 0 1 1");
  EXPECT_EQ(m_recorder.TakeFaults(), "Read Error A is away: open: switched off\n");
  m_devices[0].opens = true;
  EXPECT_EQ(Read(), "1: nan 0 1 1") << "it is too early";
  std::this_thread::sleep_for(std::chrono::milliseconds(1010));
  EXPECT_EQ(Read(), "1: 1 1 1 1");
}

// Devices drop out and come back at random. Only a device that comes back may be missed, for a scan.
TEST_P(NodeLink, ThatDropsOutAtRandomLosesNoValueOfTheOthers) {
  const bool isLong = std::getenv("VASTRA_PROVE") != nullptr;
  const int wanted = isLong ? 100000 : 500;
  Build({EAbsent::nan, EAbsent::hold, EAbsent::nan});
  std::minstd_rand chance(1);
  float held = std::nanf("");
  bool wasAlive[3] = {true, true, true};
  int dropOuts = 0, scans = 0;
  for (; dropOuts < wanted; ++scans) {
    for (CDevice& device : m_devices) {
      device.value = static_cast<float>(scans + 1);
      device.answers = chance() % 3 != 0;
    }
    CLogSample sample;
    const int result = m_head->Read(sample);
    m_recorder.Take();
    for (int i = 0; i < 3; ++i) {
      const bool isAlive = result && sample.m_values[2 * i + 1] == 1;
      ASSERT_TRUE(isAlive == m_devices[i].answers || (!isAlive && !wasAlive[i]));
      if (i == 1 && isAlive) held = sample.m_values[2];
      const float expected = isAlive ? static_cast<float>(scans + 1) : i == 1 ? held : std::nanf("");
      const float value = result ? sample.m_values[2 * i] : expected;
      ASSERT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected)));
      dropOuts += wasAlive[i] && !isAlive;
      wasAlive[i] = isAlive;
    }
  }
  if (isLong)
    std::printf(
        "claim: devices that drop out, %s: %d drop-outs in %d scans, no value of another one missing\n",
        GetParam() ? "with workers" : "in turn", dropOuts, scans);
}

class NodeOnWorkers : public NodeLink {};
INSTANTIATE_TEST_SUITE_P(WithWorkers, NodeOnWorkers, testing::Values(true));

TEST_P(NodeOnWorkers, IsAskedAtTheSameTimeAsTheOthers) {
  std::barrier all(3);
  for (int i = 0; i < 3; ++i) m_devices[i].work = [&all] { all.arrive_and_wait(); };
  Build({EAbsent::fail, EAbsent::nan, EAbsent::hold});
  for (int i = 0; i < 100; ++i) ASSERT_EQ(Read(), "1: 1 1 1 1 1 1");
}

TEST_P(NodeOnWorkers, ThatHangsDelaysOneScanOnlyAndIsAskedAgainWhenItsCallHasReturned) {
  std::string away = "1:", back = "1: 1 1";
  for (int i = 0; i < 50; ++i) {  // more than there are places and threads
    m_devices[i].work = [this] { m_gate.wait(false); };
    away += " nan 0";
    back += " 1 1";
  }
  Build(std::vector<EAbsent>(51, EAbsent::nan), kShort);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Read(), away + " 1 1");
  EXPECT_TRUE(m_recorder.TakeFaults().starts_with(
      "Read Error A is away: the driver has not returned from read after 0."));
  EXPECT_EQ(m_devices[0].calls, 1);
  OpenGate();
  while (Read() != back) std::this_thread::yield();
  EXPECT_EQ(m_devices[0].closed, 0);
  Close();
  EXPECT_GT(m_devices[0].closed, 0);
}

TEST_P(NodeOnWorkers, ThatHangsIsLeftToItsWorkerWhenTheRunEnds) {
  m_devices[0].work = [this] { m_gate.wait(false); };
  Build({EAbsent::nan, EAbsent::nan}, kShort);
  Read();
  Close();
  m_workers.reset();
  EXPECT_EQ(CNodeWorkers::OverdueTasks(), 1);
  EXPECT_EQ(m_devices[0].closed, 0);
  EXPECT_GT(m_devices[1].closed, 0);
  OpenGate();
  while (CNodeWorkers::OverdueTasks() > 0) std::this_thread::yield();
  EXPECT_GT(m_devices[0].closed, 0) << "the worker closes it";
}

TEST_P(NodeOnWorkers, OfASharedLineWaitsForTheOthersOfTheLineAndNotForOneThatHangs) {
  std::atomic<int> inside{0}, most{0};
  for (int i = 0; i < 3; ++i)
    m_devices[i].work = [&] {
      most = std::max(most.load(), ++inside);
      std::this_thread::yield();
      --inside;
    };
  Build({EAbsent::nan, EAbsent::nan, EAbsent::nan}, kShort, "serial");
  for (int i = 0; i < 100; ++i) ASSERT_EQ(Read(), "1: 1 1 1 1 1 1");
  EXPECT_EQ(most, 1);
  m_devices[1].work = m_devices[2].close = [this] { m_gate.wait(false); };
  EXPECT_EQ(Read(), "1: 1 1 nan 0 nan 0");
  EXPECT_NE(m_recorder.TakeFaults().find("C is away: its line waits for a node"), std::string::npos);
  Read();  // asks the third one, which waits in the queue
  Close();
  m_workers.reset();  // both return
}

TEST_P(NodeOnWorkers, ThatHangsKeepsNoStop) {
  m_devices[0].work = [this] { m_gate.wait(false); };
  Build({EAbsent::nan, EAbsent::nan}, CNodeWorkers::Span(500));
  m_stops = true;
  EXPECT_EQ(Read(), "1: nan 0 1 1");
  EXPECT_TRUE(m_recorder.TakeFaults().starts_with(
      "Read Notice A the stop waits for the driver to return from read, at most 0."));
}

TEST_P(NodeOnWorkers, ThatIsBackButSlowerThanTheGraceIsWaitedFor) {
  Build({EAbsent::nan, EAbsent::nan});
  m_devices[0].answers = false;
  Read();
  m_devices[0].answers = true;
  m_devices[0].work = [] { std::this_thread::sleep_for(2 * CNodeWorkers::kGrace); };
  while (Read() != "1: 1 1 1 1") std::this_thread::yield();
}

}  // namespace
}  // namespace vastra
