// The scan loop, on a clock that the test moves.
#include "host/common/scan_loop.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

using std::chrono::milliseconds;

class ScanLoop : public testing::Test {
 protected:
  ScanLoop() {
    m_options.now = [this] { return m_start + m_now; };
    m_options.period = milliseconds(100);
    auto* node = new CPlcNodeConfig;
    node->m_driver.plcType = 9001;
    node->m_driver.text1 = "counter";
    node->m_driver.variableCount = 1;
    node->m_varNames.Add("x");
    m_configuration.m_input.m_plcNodes.AddTail(node);
    m_driver = &node->m_driver;
    auto* output = new COutputConfig;
    output->m_enableEquations.Add("WriteToLog = 1");
    output->m_varNames.Add("x");
    output->m_saveCsv = 1;
    output->m_directory = m_dir.Path();
    m_configuration.m_outputs.m_outputs.AddTail(output);
    m_output = output;
  }

  // Makes the scan that is due, which ends at `end` milliseconds, and gives the time of the next one.
  std::int64_t StepUntil(CScanLoop& loop, std::int64_t end) {
    m_now = milliseconds(end);
    loop.Step();
    return std::chrono::duration_cast<milliseconds>(loop.NextDue() - m_start).count();
  }

  std::size_t LoggedRows() const {
    std::size_t rows = 0;
    for (const CFileEntry& file : ListFiles(m_dir.Path(), ".csv")) {
      const std::string text = ReadBytes(JoinPath(m_dir.Path(), file.m_name));
      rows += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
    }
    return rows;
  }

  CRecorder m_recorder;
  CTempDir m_dir;
  CConfiguration m_configuration;
  DriverConfig* m_driver = nullptr;
  COutputConfig* m_output = nullptr;
  CScanLoop::COptions m_options;
  CScanLoop::Time m_start = CScanLoop::Time(milliseconds(1000000));
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

// All stages: In is x + 1; the register of station 1 gets Out, and every third write of it fails.
void AddStages(CConfiguration& configuration) {
  configuration.m_smart.m_equations.Add("In = x + 1");
  configuration.m_smart.m_inputVars.Add("In");
  configuration.m_smart.m_outputVars.Add("Out");
  auto* summary = new CSummaryConfig;  // finds the sample with x = 2 invalid
  summary->m_enableEquations.Add("SampleIsValid = Out != 6");
  configuration.m_summaries.m_summaries.AddTail(summary);
  auto* node = new CPlcSingleConfig;
  node->m_node.m_driver.plcType = 9001;
  node->m_node.m_driver.station = 1;
  node->m_node.m_driver.variableCount = 1;
  node->m_node.m_driver.value4 = 3;
  node->m_node.m_varNames.Add("Out");
  configuration.m_plcWrite.m_nodes.AddTail(node);
  configuration.m_trend.m_equations.Add("Extra = 10 * x");
  configuration.m_trend.m_extraVars.Add("Extra");
  configuration.m_trend.m_calculateExtra = 1;
}

TEST_F(ScanLoop, ScansStayOnTheRasterAndTheMissedOnesAreLateNotMadeUp) {
  CScanLoop loop(m_configuration, m_options);
  ASSERT_EQ(1, loop.Start());
  EXPECT_EQ(m_start, loop.NextDue());
  struct {
    std::int64_t end, due;
    std::uint64_t late;
  } const kScans[] = {{10, 100, 0},  {110, 200, 0}, {300, 300, 0},
                      {301, 400, 0}, {501, 600, 1}, {1550, 1600, 10}};
  for (const auto& scan : kScans) {
    SCOPED_TRACE(scan.end);
    EXPECT_EQ(scan.due, StepUntil(loop, scan.end));
    EXPECT_EQ(scan.late, loop.Counts().late);
  }
  EXPECT_EQ(6u, loop.Counts().read);
}

TEST_F(ScanLoop, AsFastAsPossibleIsNeverLateAndRestsAfterAFailedRead) {
  m_options.period = milliseconds(0);
  m_driver->value4 = 2;  // every second read fails
  CScanLoop loop(m_configuration, m_options);
  ASSERT_EQ(1, loop.Start());
  EXPECT_EQ(5000, StepUntil(loop, 5000));
  EXPECT_EQ(6100, StepUntil(loop, 6000));
  EXPECT_EQ(7000, StepUntil(loop, 7000));
  EXPECT_EQ(0u, loop.Counts().late);
  EXPECT_EQ(1u, loop.Counts().failedReads);
}

TEST_F(ScanLoop, EndsAfterSoManyScansFailedOnesCountedAndFlushes) {
  m_options.scans = 3;
  m_driver->value4 = 3;
  CScanLoop loop(m_configuration, m_options);
  ASSERT_EQ(1, loop.Start());
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(loop.IsRunning());
    loop.Step();
  }
  EXPECT_FALSE(loop.IsRunning());
  loop.Step();
  EXPECT_EQ(2u, loop.Counts().read);
  EXPECT_EQ(1u, loop.Counts().failedReads);
  EXPECT_EQ(2u, LoggedRows());
}

TEST_F(ScanLoop, ARefusedSampleIsCountedAndTheLoopGoesOn) {
  m_output->m_maxSamples = 1;
  m_output->m_directory = m_dir / "gone";
  std::filesystem::create_directory(m_output->m_directory.Std());
  CScanLoop loop(m_configuration, m_options);
  ASSERT_EQ(1, loop.Start());
  std::filesystem::remove(m_output->m_directory.Std());
  loop.Step();
  EXPECT_EQ(1u, loop.Counts().failedWrites.outputs);
  EXPECT_TRUE(loop.IsRunning());
}

TEST_F(ScanLoop, AStageThatRefusesIsNamedAndAllIsClosed) {
  AddStages(m_configuration);
  m_configuration.m_trend.m_equations[0] = "Extra = y";
  CScanLoop trend(m_configuration, m_options);
  EXPECT_EQ(0, trend.Start());
  EXPECT_EQ(trend.FailedStage(), EStage::trend);
  m_configuration.m_plcWrite.m_nodes.GetHead()->m_node.m_driver.plcType = 1;
  CScanLoop plcWrite(m_configuration, m_options);
  EXPECT_EQ(0, plcWrite.Start());
  EXPECT_EQ(plcWrite.FailedStage(), EStage::plcWrite);
  m_configuration.m_smart.m_outputVars[0] = "x";
  CScanLoop smart(m_configuration, m_options);
  EXPECT_EQ(0, smart.Start());
  EXPECT_EQ(smart.FailedStage(), EStage::smart);
  m_configuration.m_smart.Clear();
  m_output->m_nameVariable = "y";
  CScanLoop outputs(m_configuration, m_options);
  EXPECT_EQ(0, outputs.Start());
  EXPECT_EQ(outputs.FailedStage(), EStage::outputs);
  EXPECT_FALSE(outputs.IsRunning());
  m_driver->text1 = "nonsense";
  CScanLoop input(m_configuration, m_options);
  EXPECT_EQ(0, input.Start());
  EXPECT_EQ(input.FailedStage(), EStage::input);
}

TEST_F(ScanLoop, AStopWithWorkersUnderWayWaitsForTheirMessages) {
  CMessageQueue queue;
  CMessage message;
  m_options.threaded = true;
  m_options.target = &queue;
  CScanLoop loop(m_configuration, m_options);
  ASSERT_EQ(1, loop.Start());
  loop.Step();
  EXPECT_TRUE(loop.IsPending());
  loop.Stop();
  EXPECT_TRUE(loop.IsRunning());
  for (const UINT expected : {CScanLoop::messageRead, CScanLoop::messageWritten}) {
    EXPECT_TRUE(loop.IsPending());
    ASSERT_EQ(1, queue.Wait(message, 10000));
    EXPECT_EQ(expected, message.m_message);
    loop.Notify(message.m_message + 2, 1);
    EXPECT_TRUE(loop.IsRunning());
    loop.Notify(message.m_message, message.m_wparam);
  }
  EXPECT_FALSE(loop.IsRunning());
  loop.Notify(message.m_message, message.m_wparam);
  EXPECT_EQ(1u, loop.Counts().read);
  EXPECT_EQ(1u, LoggedRows());
}

TEST_F(ScanLoop, ASampleGoesThroughAllStagesWhateverOneOfThemSays) {
  AddStages(m_configuration);
  m_output->m_varNames[0] = "Out";
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
      ASSERT_EQ(1, trend.Read(&sample));
      ASSERT_EQ(2, sample.m_values.GetSize());
      extras.push_back(sample.m_values[1]);
    };
    CScanLoop loop(m_configuration, m_options);
    ASSERT_EQ(1, loop.Start());
    while (loop.IsRunning()) {
      CMessage message;
      loop.Step();
      while (loop.IsPending() && queue.Wait(message, 10000)) loop.Notify(message.m_message, message.m_wparam);
    }
    EXPECT_EQ((std::vector<float>{2, 3, 4, 5}), logic.m_seen);
    EXPECT_EQ((std::vector<float>{10, 20, 30, 40}), extras);
    const auto& failed = loop.Counts().failedWrites;
    EXPECT_EQ(0u, failed.smart + failed.outputs + failed.trend);
    EXPECT_EQ(1u, failed.summaries);
    EXPECT_EQ(1u, failed.plcWrite);
    EXPECT_EQ(4u, LoggedRows());
  }
}

TEST_F(ScanLoop, LogicThatLacksAVariableKeepsTheRunFromStarting) {
  AddStages(m_configuration);
  m_configuration.m_smart.m_outputVars[0] = "Other";
  CDoubler logic;
  m_options.logic = &logic;
  CScanLoop loop(m_configuration, m_options);
  EXPECT_EQ(0, loop.Start());
  EXPECT_EQ(loop.FailedStage(), EStage::smart);
}

TEST_F(ScanLoop, TheEndOfAReplayIsNoFailedRead) {
  m_options.period = milliseconds(0);
  m_options.scans = 2;
  m_output->m_saveRp = 1;
  CScanLoop record(m_configuration, m_options);
  ASSERT_EQ(1, record.Start());
  while (record.IsRunning()) record.Step();
  ASSERT_EQ(1, ListFiles(m_dir.Path(), ".rph").GetSize());

  m_configuration.m_input.m_simulating = 1;
  m_configuration.m_input.m_inputFiles.AddTail(
      JoinPath(m_dir.Path(), ListFiles(m_dir.Path(), ".rph")[0].m_name));
  m_options.scans = -1;
  CScanLoop replay(m_configuration, m_options);
  ASSERT_EQ(1, replay.Start());
  while (replay.IsRunning()) replay.Step();
  EXPECT_EQ(2u, replay.Counts().read);
  EXPECT_EQ(0u, replay.Counts().failedReads);
}

}  // namespace
}  // namespace vastra
