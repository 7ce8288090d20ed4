#include "host/common/scan_loop.h"

#include <utility>

namespace vastra {

CScanLoop::CScanLoop(const CConfiguration& configuration, COptions options) : m_options(std::move(options)) {
  *m_input.GetOptions() = configuration.m_input;
  *m_outputs.GetOptions() = configuration.m_outputs;
  if (m_options.period < Period::zero()) m_options.period = Period(m_input.GetScanPeriod());
}

int CScanLoop::Start() {
  CStringArray names;
  m_failedStage = nullptr;
  if (!m_input.Open() || !m_input.GetVarNames(names))
    m_failedStage = "input";
  else if (!m_outputs.Open(names))
    m_failedStage = "outputs";
  if (m_failedStage) return Close(), 0;
  m_input.SetCallBack(m_options.threaded, m_options.target, messageRead);
  m_counts = {};
  m_stopping = m_options.scans == 0;
  m_due = m_options.now();
  m_state = EState::idle;
  if (m_stopping) Close();
  return 1;
}

void CScanLoop::Step() {
  if (m_state != EState::idle) return;
  m_state = EState::reading;
  const int result = m_input.Read(m_sample);
  if (!m_options.threaded || !result) HaveRead(result);
}

void CScanLoop::Notify(UINT message, WPARAM result) {
  if (m_state == EState::reading && message == messageRead) HaveRead(result != 0);
}

void CScanLoop::HaveRead(bool succeeded) {
  if (!succeeded && m_input.IsFinished()) return Close();
  ++(succeeded ? m_counts.read : m_counts.failedReads);
  if (succeeded) Distribute();
  EndScan(succeeded);
}

// A stage that refuses a sample does not keep it from the stages behind it.
void CScanLoop::Distribute() {
  if (!m_outputs.Write(m_sample)) ++m_counts.failedOutputs;
}

void CScanLoop::EndScan(bool succeeded) {
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
}

void CScanLoop::Stop() {
  m_stopping = true;
  if (m_state == EState::idle) Close();
}

void CScanLoop::Close() {
  m_input.Close();
  m_outputs.Close();
  m_state = EState::closed;
}

}  // namespace vastra
