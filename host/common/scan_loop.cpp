#include "host/common/scan_loop.h"

#include <algorithm>
#include <utility>

#include "host/common/same_fields.h"
#include "host/common/stage_names.h"

namespace vastra {

const char* KeyOf(EStage stage) {
  constexpr const char* kKeys[] = {"", "input", "smart", "outputs", "summaries", "plcWrite", "trend"};
  return kKeys[static_cast<std::size_t>(stage)];
}

CScanCounts& CScanCounts::operator+=(const CScanCounts& more) {
  read += more.read;
  failedReads += more.failedReads;
  late += more.late;
  failedWrites.smart += more.failedWrites.smart;
  failedWrites.outputs += more.failedWrites.outputs;
  failedWrites.summaries += more.failedWrites.summaries;
  failedWrites.plcWrite += more.failedWrites.plcWrite;
  failedWrites.trend += more.failedWrites.trend;
  return *this;
}

bool LeavesOutWriting(const CConfiguration& configuration, const CLoopOptions& options) {
  const CPlcMultiConfig& plcWrite = configuration.m_plcWrite;
  return configuration.m_input.m_simulating && !options.replayWrites && !plcWrite.m_disableWriting &&
         !plcWrite.m_nodes.IsEmpty();
}

// What is done with a stage. Stages before the smart stage and trending get the names of the input, the
// others those after the smart stage.
struct CScanLoop::CStage {
  EStage stage;
  bool (*isSame)(const CConfiguration& a, const CConfiguration& b);
  CStringArray CScanLoop::*names;  // of its samples; null: it has no stage before it
  bool keepsLogs;
  void (*take)(CScanLoop& loop, const CConfiguration& configuration);
  int (*open)(CScanLoop& loop);
  void (*close)(CScanLoop& loop);
};

namespace {

template <auto MEMBER>
bool HasSame(const CConfiguration& a, const CConfiguration& b) {
  return SameFields(a.*MEMBER, b.*MEMBER);
}

// A replay can leave the nodes closed.
bool HasSamePlcWrite(const CConfiguration& a, const CConfiguration& b) {
  return HasSame<&CConfiguration::m_plcWrite>(a, b) && !a.m_input.m_simulating == !b.m_input.m_simulating;
}

// The names that a configuration stores for trending are replaced when the stage opens.
bool HasSameTrend(const CConfiguration& a, const CConfiguration& b) {
  CTrendConfig before = a.m_trend;
  before.m_baseVars = b.m_trend.m_baseVars;
  return SameFields(before, b.m_trend);
}

}  // namespace

const CScanLoop::CStage CScanLoop::kStages[] = {
    {EStage::input, HasSame<&CConfiguration::m_input>, nullptr, false,
     [](auto& loop, auto& configuration) { loop.TakeInput(configuration); },
     [](auto& loop) { return loop.OpenInput(); }, [](auto& loop) { loop.m_input.Close(); }},
    {EStage::smart, HasSame<&CConfiguration::m_smart>, &CScanLoop::m_inputNames, false,
     [](auto& loop, auto& configuration) { *loop.m_smart.GetOptions() = configuration.m_smart; },
     [](auto& loop) { return loop.OpenSmart(); }, [](auto& loop) { loop.m_smart.Close(); }},
    {EStage::outputs, HasSame<&CConfiguration::m_outputs>, &CScanLoop::m_names, true,
     [](auto& loop, auto& configuration) {
       *loop.m_outputs.GetOptions() = configuration.m_outputs;
       loop.m_outputs.SetLogKeeper(loop.m_options.keeper);
     },
     [](auto& loop) { return loop.m_outputs.Open(loop.m_names); },
     [](auto& loop) { loop.m_outputs.Close(); }},
    {EStage::summaries, HasSame<&CConfiguration::m_summaries>, &CScanLoop::m_names, true,
     [](auto& loop, auto& configuration) {
       *loop.m_summaries.GetOptions() = configuration.m_summaries;
       loop.m_summaries.SetLogKeeper(loop.m_options.keeper);
     },
     [](auto& loop) { return loop.m_summaries.Open(loop.m_names); },
     [](auto& loop) { loop.m_summaries.Close(); }},
    {EStage::plcWrite, HasSamePlcWrite, &CScanLoop::m_names, false,
     [](auto& loop, auto& configuration) { loop.TakePlcWrite(configuration); },
     [](auto& loop) { return loop.OpenPlcWrite(); }, [](auto& loop) { loop.m_plcWrite.Close(); }},
    {EStage::trend, HasSameTrend, &CScanLoop::m_inputNames, false,
     [](auto& loop, auto& configuration) { loop.TakeTrend(configuration); },
     [](auto& loop) { return loop.OpenTrend(); }, [](auto& loop) { loop.m_trend.Close(); }},
};

CScanLoop::CScanLoop(const CConfiguration& configuration, COptions options) : m_options(std::move(options)) {
  m_trend.ShareOptions(m_options.trend);
  for (const CStage& stage : kStages) stage.take(*this, configuration);
  m_outputs.SetLogListener(m_options.outputs);
  m_summaries.SetLogListener(m_options.summaries);
  m_input.SetWorkers(m_options.workers);
  m_plcWrite.SetWorkers(m_options.workers);
}

void CScanLoop::TakeInput(const CConfiguration& configuration) {
  *m_input.GetOptions() = configuration.m_input;
  m_period = m_options.period < Period::zero() ? Period(m_input.GetScanPeriod()) : m_options.period;
  m_isReadOnly = configuration.m_input.m_simulating && !m_options.replayWrites;
}

void CScanLoop::TakePlcWrite(const CConfiguration& configuration) {
  *m_plcWrite.GetOptions() = configuration.m_plcWrite;
  if (m_isReadOnly) m_plcWrite.GetOptions()->m_disableWriting = 1;
}

void CScanLoop::TakeTrend(const CConfiguration& configuration) {
  if (!m_options.trend) *m_trend.GetOptions() = configuration.m_trend;
}

int CScanLoop::Start() {
  m_failedStage = OpenStages();
  if (m_failedStage != EStage::none) return Close(), 0;
  if (m_options.opened) m_options.opened();
  SetWorkers();
  m_counts = {};
  m_stopping = m_options.scans == 0;
  m_due = m_options.now();
  m_state = EState::idle;
  if (m_stopping) Close();
  return 1;
}

void CScanLoop::SetWorkers() {
  m_plcWrite.SetNodeNumber(m_options.node);
  m_input.SetCallBack(m_options.threaded, m_options.target, messageRead);
  m_plcWrite.SetCallBack(m_options.threaded, m_options.target, messageWritten);
}

// Returns the stage that does not open.
EStage CScanLoop::OpenStages() {
  for (const CStage& stage : kStages)
    if (!stage.open(*this)) return stage.stage;
  return EStage::none;
}

int CScanLoop::OpenInput() { return m_input.Open() && m_input.GetVarNames(m_inputNames); }

// Sets the names after the smart stage.
int CScanLoop::OpenSmart() {
  m_names = m_inputNames;
  m_usesSmart = UsesSmart(*m_smart.GetOptions());
  if (!m_usesSmart) return 1;
  CStringArray before = m_inputNames;
  if (!m_smart.Open(before) || !m_smart.GetVarNames(m_names)) return 0;
  return m_options.logic ? m_options.logic->Open(m_smart) : 1;
}

int CScanLoop::OpenPlcWrite() {
  m_openedToWrite = !m_plcWrite.GetOptions()->m_disableWriting;
  return m_plcWrite.Open(m_names);
}

int CScanLoop::OpenTrend() {
  CStringArray names = m_inputNames;
  m_trend.GetOptions()->m_baseVars = names;
  return m_trend.Open(names);
}

int CScanLoop::Reload(const CReload& reload) {
  std::vector<const CStage*> reopened;
  if (m_state != EState::idle) return 0;
  const Period period = m_period;
  CLogKeeper* const keeper = std::exchange(m_options.keeper, reload.keeper);
  if (keeper) keeper->HoldLocks(true);
  m_failedStage = ReopenStages(reload, keeper != reload.keeper, reopened);
  if (m_failedStage != EStage::none) {
    if (reload.refused) reload.refused(m_failedStage);
    m_options.keeper = keeper;
    if (!GoBack(reload, reopened)) Close();
  } else if (m_options.opened) {
    m_options.opened();
  }
  if (keeper) keeper->HoldLocks(false);
  if (m_state == EState::idle) SetWorkers();
  if (m_period != period) m_due = m_options.now();
  return m_failedStage == EStage::none;
}

// Returns the stage that does not open. reopened gets those that were closed, in order.
EStage CScanLoop::ReopenStages(const CReload& reload, bool areLogsReopened,
                               std::vector<const CStage*>& reopened) {
  const CStringArray inputNames = m_inputNames, names = m_names;  // so far
  for (const CStage& stage : kStages) {
    const CStringArray& before = stage.names == &CScanLoop::m_inputNames ? inputNames : names;
    const bool hasSameNames = !stage.names || this->*stage.names == before;
    if (hasSameNames && stage.isSame(reload.before, reload.after) && !(stage.keepsLogs && areLogsReopened))
      continue;
    reopened.push_back(&stage);
    stage.close(*this);
    if (!Reopen(stage, reload, reload.after)) return stage.stage;
  }
  return EStage::none;
}

int CScanLoop::Reopen(const CStage& stage, const CReload& reload, const CConfiguration& configuration) {
  Prepare(stage, reload, configuration);
  return stage.open(*this);
}

void CScanLoop::Prepare(const CStage& stage, const CReload& reload, const CConfiguration& configuration) {
  if (reload.reopening) reload.reopening(stage.stage, configuration);
  stage.take(*this, configuration);
}

bool CScanLoop::GoBack(const CReload& reload, const std::vector<const CStage*>& reopened) {
  for (const CStage* stage : reopened) stage->close(*this);
  for (const CStage* stage : reopened) Prepare(*stage, reload, reload.before);
  for (const CStage* stage : reopened)
    if (!stage->open(*this)) return m_failedStage = stage->stage, false;
  return true;
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
  if (m_period == Period::zero()) {
    m_due = succeeded ? now : now + kRest;
    return;
  }
  m_due += m_period;
  if (m_due >= now) return;
  const auto missed = (now - m_due + m_period - Time::duration(1)) / m_period;
  m_counts.late += static_cast<std::uint64_t>(missed);
  m_due += missed * m_period;
  if (m_options.late) TellLate();
}

// A node that took half the period is the cause.
void CScanLoop::TellLate() {
  CNodeGroup::CSlowest slowest = m_input.Slowest();
  if (CNodeGroup::CSlowest written = m_plcWrite.Slowest(); written.time > slowest.time)
    slowest = std::move(written);
  m_options.late(2 * slowest.time >= m_period ? slowest.name : CString());
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
  for (const CStage& stage : kStages) stage.close(*this);
  m_state = EState::closed;
}

}  // namespace vastra
