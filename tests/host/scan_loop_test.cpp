// The scan loop, on a clock that the test moves.
#include "host/common/scan_loop.h"

#include "tests/host/logger.h"

namespace vastra {
namespace {

using std::chrono::milliseconds;

class ScanLoop : public CLoggerTest {
 protected:
  ScanLoop() {
    m_options.now = [this] { return CScanLoop::Time(m_now); };
    m_options.period = milliseconds(100);
  }

  // Makes the scan that is due, which ends at `end` milliseconds, and returns the time of the next one.
  std::int64_t StepUntil(CScanLoop& loop, std::int64_t end) {
    m_now = milliseconds(end);
    loop.Step();
    return std::chrono::duration_cast<milliseconds>(loop.NextDue().time_since_epoch()).count();
  }

  CScanLoop::COptions m_options;
  milliseconds m_now{0};
};

// Doubles In into Out, and keeps what it has seen.
class CDoubler : public CSmartLogic {
 public:
  int Open(CLogSmart& smart) override {
    CString in = "In", out = "Out";
    return smart.GetInputIndex(in, m_in) && smart.GetOutputIndex(out, m_out);
  }
  void Run(CLogSmart& smart, const _timeb&) override {
    float value = 0;
    if (smart.ReadInputVar(m_in, value)) smart.WriteOutputVar(m_out, 2 * value);
    m_seen.push_back(value);
  }
  UINT m_in = 0, m_out = 0;
  std::vector<float> m_seen;
};

TEST_F(ScanLoop, ScansStayAtFixedIntervalsAndTheMissedOnesAreLateNotMadeUp) {
  CScanLoop loop(Logger(), m_options);
  ASSERT_EQ(loop.Start(), 1);
  const std::tuple<std::int64_t, std::int64_t, std::uint64_t> kScans[] = {
      {10, 100, 0}, {110, 200, 0}, {300, 300, 0}, {301, 400, 0}, {501, 600, 1}, {1550, 1600, 10}};
  for (const auto& [end, due, late] : kScans) {
    EXPECT_EQ(StepUntil(loop, end), due);
    EXPECT_EQ(loop.Counts().late, late) << end;
  }
  EXPECT_EQ(loop.Counts().read, 6u);
}

TEST_F(ScanLoop, AsFastAsPossibleIsNeverLateRestsAfterAFailedReadAndEndsAfterSoManyScans) {
  m_options.period = milliseconds(0);
  m_options.scans = 4;
  CScanLoop loop(Logger(R"({"input": {"asFastAsPossible": 0}})", R"({"value4": 2})"), m_options);
  ASSERT_EQ(loop.Start(), 1);
  EXPECT_EQ(StepUntil(loop, 5000), 5000);
  EXPECT_EQ(StepUntil(loop, 6000), 6100);  // every second read fails
  EXPECT_EQ(StepUntil(loop, 7000), 7000);
  EXPECT_TRUE(loop.IsRunning());
  loop.Step();
  EXPECT_FALSE(loop.IsRunning());
  loop.Step();
  EXPECT_EQ(loop.Counts().late, 0u);
  EXPECT_EQ(loop.Counts().read, 2u);
  EXPECT_EQ(loop.Counts().failedReads, 2u);
  EXPECT_EQ(Rows(m_dir.Path()), 2u);
}

TEST_F(ScanLoop, AStopWithWorkersUnderWayWaitsForTheirMessages) {
  CMessageQueue queue;
  CMessage message;
  m_options.threaded = true;
  m_options.target = &queue;
  CScanLoop loop(Logger(), m_options);
  ASSERT_EQ(loop.Start(), 1);
  loop.Step();
  loop.Stop();
  EXPECT_TRUE(loop.IsRunning());
  for (const UINT expected : {CScanLoop::messageRead, CScanLoop::messageWritten}) {
    EXPECT_TRUE(loop.IsPending());
    ASSERT_EQ(queue.Wait(message, 10000), 1);
    EXPECT_EQ(message.m_message, expected);
    loop.Notify(message.m_message + 2, 1);
    EXPECT_EQ(loop.Counts().read, expected - CScanLoop::messageRead) << "another message ends the read";
    EXPECT_TRUE(loop.IsRunning());
    loop.Notify(message.m_message, message.m_wparam);
  }
  EXPECT_FALSE(loop.IsRunning());
  loop.Notify(message.m_message, message.m_wparam);
  EXPECT_EQ(loop.Counts().read, 1u);
  EXPECT_EQ(Rows(m_dir.Path()), 1u);
}

// The simulator counts x. In is x + 1; the logic doubles it into Out. The sample with x = 2 is lost by an
// output and invalid for the summary; the register of station 1 gets Out, and every third write of it fails.
TEST_F(ScanLoop, ASampleGoesThroughAllStagesWhateverOneOfThemSays) {
  const CConfiguration configuration = Logger(R"({
"smart": {"equationText": "In = x + 1;", "inputVars": ["In"], "outputVars": ["Out"]},
"outputs": [{"enableText": "WriteToLog = 1;", "varNames": ["Out"], "nameVariable": "Out", "saveCsv": 1, "directory": "."},
  {"enableText": "WriteToLog = Out == 6;", "saveCsv": 1, "maxSamples": 1, "directory": "gone"}],
"summaries": [{"enableText": "SampleIsValid = Out != 6;"}],
"plcWrite": {"nodes": [{"driver": {"plcType": 9001, "station": 1, "value4": 3}, "varNames": ["Out"]}]},
"trend": {"calculateExtra": 1, "equationText": "Extra = 10 * x;", "extraVars": ["Extra"]}})");
  m_options.scans = 4;
  CMessageQueue queue;
  m_options.target = &queue;
  for (const bool threaded : {false, true}) {
    SCOPED_TRACE(threaded);
    CDoubler logic;
    std::vector<float> extras;
    m_options.threaded = threaded;
    m_options.logic = &logic;
    m_options.refresh = [&](CLogTrendings& trend) {
      CLogSample sample;
      ASSERT_EQ(trend.Read(&sample), 1);
      ASSERT_EQ(sample.m_values.GetSize(), 2);
      extras.push_back(sample.m_values[1]);
    };
    std::filesystem::create_directory((m_dir / "gone").Std());
    CScanLoop loop(configuration, m_options);
    ASSERT_EQ(loop.Start(), 1);
    std::filesystem::remove((m_dir / "gone").Std());
    while (loop.IsRunning()) {
      CMessage message;
      loop.Step();
      while (loop.IsPending() && queue.Wait(message, 10000)) loop.Notify(message.m_message, message.m_wparam);
    }
    EXPECT_EQ(logic.m_seen, (std::vector<float>{2, 3, 4, 5}));
    EXPECT_EQ(extras, (std::vector<float>{10, 20, 30, 40}));
    const auto& [smart, outputs, summaries, plcWrite, trend] = loop.Counts().failedWrites;
    EXPECT_EQ(std::vector({smart, outputs, summaries, plcWrite, trend}),
              (std::vector<std::uint64_t>{0, 1, 1, 1, 0}));
    EXPECT_EQ(Rows(m_dir.Path()), 4u);
  }
}

TEST_F(ScanLoop, LogicThatLacksAVariableRefusesTheStart) {
  CDoubler logic;
  m_options.logic = &logic;
  CScanLoop loop(Logger(R"({"smart": {"inputVars": ["In"], "outputVars": ["Other"]}})"), m_options);
  EXPECT_EQ(loop.Start(), 0);
  EXPECT_STREQ(loop.FailedStage(), "smart");
}

TEST_F(ScanLoop, OnlyTheComputerThatASampleNamesWritesToThePlcsAndOnlyIfOpenedToWrite) {
  m_options.node = 2;
  m_options.scans = 3;
  CConfiguration configuration = Logger(R"({
"input": {"plcNodes": [{"driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["ComputerNode"]}]},
"plcWrite": {"nodes": [{"driver": {"plcType": 9001, "station": 1, "value4": 1}, "varNames": ["x"]}]}})");
  m_options.replayWrites = false;  // which is for replays
  for (const bool disable : {false, true}) {
    configuration.m_plcWrite.m_disableWriting = disable;
    CScanLoop loop(configuration, m_options);
    ASSERT_EQ(loop.Start(), 1);
    EXPECT_TRUE(loop.DisableWriting(true));
    EXPECT_EQ(loop.DisableWriting(false), !disable);
    while (loop.IsRunning()) loop.Step();
    EXPECT_EQ(loop.Counts().failedWrites.plcWrite, disable ? 0u : 1u) << "each write fails";
  }
}

}  // namespace
}  // namespace vastra
