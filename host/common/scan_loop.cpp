#include "host/common/scan_loop.h"

#include <utility>

#include "host/common/stage_names.h"

namespace vastra {

const char* KeyOf(EStage stage) {
  constexpr const char* kKeys[] = {"", "input", "smart", "outputs", "summaries", "plcWrite", "trend"};
  return kKeys[static_cast<std::size_t>(stage)];
}

bool LeavesOutWriting(const CConfiguration& configuration, const CLoopOptions& options) {
  const CPlcMultiConfig& plcWrite = configuration.m_plcWrite;
  return configuration.m_input.m_simulating && !options.replayWrites && !plcWrite.m_disableWriting &&
         !plcWrite.m_nodes.IsEmpty();
}

CScanLoop::CScanLoop(const CConfiguration& configuration, COptions options)
    : m_options(std::move(options)),
      m_usesSmart(UsesSmart(configuration.m_smart)),
      m_isReadOnly(configuration.m_input.m_simulating && !m_options.replayWrites) {
  *m_input.GetOptions() = configuration.m_input;
  *m_smart.GetOptions() = configuration.m_smart;
  *m_outputs.GetOptions() = configuration.m_outputs;
  *m_summaries.GetOptions() = configuration.m_summaries;
  *m_plcWrite.GetOptions() = configuration.m_plcWrite;
  if (m_isReadOnly) m_plcWrite.GetOptions()->m_disableWriting = 1;
  m_trend.ShareOptions(m_options.trend);
  if (!m_options.trend) *m_trend.GetOptions() = configuration.m_trend;
  m_outputs.SetLogListener(m_options.outputs);
  m_summaries.SetLogListener(m_options.summaries);
  m_outputs.SetLogKeeper(m_options.keeper);
  m_summaries.SetLogKeeper(m_options.keeper);
  m_input.SetWorkers(m_options.workers);
  m_plcWrite.SetWorkers(m_options.workers);
  if (m_options.period < Period::zero()) m_options.period = Period(m_input.GetScanPeriod());
}

int CScanLoop::Start() {
  m_failedStage = OpenStages();
  if (m_failedStage != EStage::none) return Close(), 0;
  if (m_options.opened) m_options.opened();
  m_openedToWrite = !m_plcWrite.GetOptions()->m_disableWriting;
  m_plcWrite.SetNodeNumber(m_options.node);
  m_input.SetCallBack(m_options.threaded, m_options.target, messageRead);
  m_plcWrite.SetCallBack(m_options.threaded, m_options.target, messageWritten);
  m_counts = {};
  m_stopping = m_options.scans == 0;
  m_due = m_options.now();
  m_state = EState::idle;
  if (m_stopping) Close();
  return 1;
}

// Returns the stage that does not open. Trending gets the names of the input stage, all others those after
// the smart stage.
EStage CScanLoop::OpenStages() {
  CStringArray inputNames;
  if (!m_input.Open() || !m_input.GetVarNames(inputNames)) return EStage::input;
  CStringArray names = inputNames;
  if (m_usesSmart && !OpenSmart(names)) return EStage::smart;
  if (!m_outputs.Open(names)) return EStage::outputs;
  if (!m_summaries.Open(names)) return EStage::summaries;
  if (!m_plcWrite.Open(names)) return EStage::plcWrite;
  return OpenTrend(inputNames) ? EStage::none : EStage::trend;
}

// Adds the smart output variables to names.
int CScanLoop::OpenSmart(CStringArray& names) {
  CStringArray before = names;
  if (!m_smart.Open(before) || !m_smart.GetVarNames(names)) return 0;
  return m_options.logic ? m_options.logic->Open(m_smart) : 1;
}

int CScanLoop::OpenTrend(CStringArray& names) {
  m_trend.GetOptions()->m_baseVars = names;
  return m_trend.Open(names);
}

void CScanLoop::Step() {
  if (m_state != EState::idle) return;
  m_state = EState::reading;
  const int result = m_input.Read(m_sample);
  if (!m_options.threaded || !result) HaveRead(result);
}

void CScanLoop::Notify(UINT message, WPARAM result) {
  if (m_state == EState::reading && message == messageRead)
    HaveRead(result != 0);
  else if (m_state == EState::writing && message == messageWritten)
    HaveWritten(result != 0);
}

void CScanLoop::HaveRead(bool succeeded) {
  if (!succeeded && m_input.IsFinished()) return Close();
  ++(succeeded ? m_counts.read : m_counts.failedReads);
  if (succeeded)
    Distribute();
  else
    EndScan(false);
}

// If a stage refuses the sample, the later stages still get it.
void CScanLoop::Distribute() {
  CLogSample* const sample = m_usesSmart ? PassSmart() : &m_sample;
  if (!sample) return Finish();
  if (!m_outputs.Write(*sample)) ++m_counts.failedWrites.outputs;
  if (!m_summaries.Write(*sample)) ++m_counts.failedWrites.summaries;
  StartWrite(*sample);
}

// Returns the sample with the smart output variables. Returns null if the smart stage refuses the sample,
// because its Read would return an earlier sample.
CLogSample* CScanLoop::PassSmart() {
  if (m_smart.Write(m_sample)) {
    if (m_options.logic) m_options.logic->Run(m_smart, m_sample.m_time);
    if (m_smart.Read(m_smartSample)) return &m_smartSample;
  }
  ++m_counts.failedWrites.smart;
  return nullptr;
}

void CScanLoop::StartWrite(CLogSample& sample) {
  m_state = EState::writing;
  const int result = m_plcWrite.Write(sample);
  if (!m_options.threaded || !result) HaveWritten(result);
}

void CScanLoop::HaveWritten(bool succeeded) {
  if (!succeeded) ++m_counts.failedWrites.plcWrite;
  Finish();
}

void CScanLoop::Finish() {
  if (!m_trend.Write(m_sample)) ++m_counts.failedWrites.trend;
  if (m_options.refresh) m_options.refresh(m_trend);
  EndScan(true);
}

void CScanLoop::Deliver() {
  m_outputs.Deliver();
  m_summaries.Deliver();
}

void CScanLoop::EndScan(bool succeeded) {
  Deliver();
  const auto scans = static_cast<std::int64_t>(m_counts.read + m_counts.failedReads);
  if (m_stopping || scans == m_options.scans) return Close();
  m_state = EState::idle;
  Schedule(succeeded);
}

void CScanLoop::Schedule(bool succeeded) {
  const Time now = m_options.now();
  if (m_options.period == Period::zero()) {
    m_due = succeeded ? now : now + kRest;
    return;
  }
  m_due += m_options.period;
  if (m_due >= now) return;
  const auto missed = (now - m_due + m_options.period - Time::duration(1)) / m_options.period;
  m_counts.late += static_cast<std::uint64_t>(missed);
  m_due += missed * m_options.period;
  if (m_options.late) TellLate();
}

// A node that took half the period is the cause.
void CScanLoop::TellLate() {
  CNodeGroup::CSlowest slowest = m_input.Slowest();
  if (CNodeGroup::CSlowest written = m_plcWrite.Slowest(); written.time > slowest.time)
    slowest = std::move(written);
  m_options.late(2 * slowest.time >= m_options.period ? slowest.name : CString());
}

// A worker that has started finishes its write.
bool CScanLoop::DisableWriting(bool disable) {
  m_plcWrite.GetOptions()->m_disableWriting = disable || m_isReadOnly;
  return disable || m_isReadOnly || m_openedToWrite;
}

void CScanLoop::Stop() {
  m_stopping = true;
  if (m_state == EState::idle) Close();
}

void CScanLoop::Close() {
  if (m_state != EState::closed && m_options.closing) m_options.closing();
  m_input.Close();
  m_smart.Close();
  m_outputs.Close();
  m_summaries.Close();
  m_plcWrite.Close();
  m_trend.Close();
  m_state = EState::closed;
}

}  // namespace vastra
