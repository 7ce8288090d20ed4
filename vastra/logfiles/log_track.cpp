#include "vastra/logfiles/log_track.h"

#include "vastra/core/messenger.h"
#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_time.h"

namespace vastra {
namespace {

constexpr std::size_t kLogsToWaitFor = 2;  // complete ones, for a writer of samples that can wait

}  // namespace

CLogTrack::CLogTrack(CKeeperState& keeper, const CTrackSettings& settings)
    : m_keeper(keeper),
      m_settings(settings),
      m_folder(settings.naming, settings.maxLogs, settings.retention) {}

CString CLogTrack::Lock(const CString& key) {
  m_key = key;
  try {
    int other = 0;
    if (m_lock.Take(key, m_settings.naming, other)) return {};
    return other ? CString("process " + std::to_string(other) + " already writes these logs")
                 : CString("another process already writes these logs");
  } catch (const CFileException& fault) {
    return fault.m_path + ": " + fault.Text();
  }
}

bool CLogTrack::Append(const CLogSample& sample) {
  CGuard lock(m_mutex);
  CLogPointer log = m_collected;
  if (!log) {
    log = std::make_shared<CKeptLog>(m_keeper.pool);
    log->names = m_settings.varNames;
  }
  log->samples.Append(sample);
  ++log->count;
  if (!m_collected) m_logs.push_back(log), m_collected = log;
  ++m_ledger.taken;
  const bool isFull = log->count >= m_settings.maxSamples;
  lock.unlock();
  ++m_taken;
  m_lastTime = sample.m_time;
  m_hasLastTime = true;
  if (m_keeper.policy.live) m_keeper.HaveSample();
  return isFull;
}

double CLogTrack::ClockStep(const CLogSample& sample) const {
  return m_hasLastTime ? std::max(0.0, Seconds(m_lastTime) - Seconds(sample.m_time)) : 0;
}

void CLogTrack::EndLog() {
  Complete();
  if (!m_keeper.policy.waits) return;
  CGuard lock(m_mutex);
  m_changed.wait(lock, [this] { return m_logs.size() < kLogsToWaitFor || !m_logs[0]->failure.IsEmpty(); });
}

// Leaves the log to the writer thread.
void CLogTrack::Complete() {
  {
    const CGuard lock(m_mutex);
    if (!m_collected) return;
    m_collected->isComplete = true;
    m_collected->sequence = m_keeper.NextSequence();
    m_collected->bytes = m_collected->samples.GetBytes();
    m_keeper.Hold(m_collected->bytes);
    m_collected = nullptr;
    for (const CLogPointer& log : m_logs) log->nextTry = {};
  }
  m_keeper.Wake();
  m_keeper.LimitHeld();
}

void CLogTrack::WantImage() {
  const CGuard lock(m_mutex);
  if (!m_collected) return;
  m_collected->wantsImage = true;
  m_keeper.Wake();
}

void CLogTrack::Close() {
  {
    const CGuard lock(m_mutex);
    if (m_collected) m_collected->isCut = true;
    m_closing = true;
    for (const CLogPointer& log : m_logs) log->nextJournal = {};
  }
  Complete();
  m_keeper.HaveSample();
  CGuard lock(m_mutex);
  m_changed.wait_until(lock, m_keeper.CloseBy(), [this] { return m_logs.empty() || IsSafe(); });
  for (const CLogPointer& log : m_logs) Drop(*log, "the disk did not answer in time");
  m_logs.clear();
}

// Whether waiting longer would make no difference: the oldest log cannot be saved, and the journal has all.
bool CLogTrack::IsSafe() const {
  return !m_logs[0]->failure.IsEmpty() &&
         std::all_of(m_logs.begin(), m_logs.end(), [](const auto& log) { return log->synced == log->count; });
}

// Counts the samples of log that are not on the disk as lost, or as left in the journal. The caller removes
// the log from m_logs.
void CLogTrack::Drop(CKeptLog& log, const CString& cause) {
  log.isDropped = true;
  m_keeper.Release(log.bytes);
  const std::uint64_t journaled = log.InJournal(), lost = log.InMemory();
  if (journaled) {
    m_ledger.inJournal += journaled;
    AddLine(severityWarning,
            ShowCount(journaled) + " in the journal only: the next start makes a log of them");
  }
  if (!lost) return;
  CSampleSpans all;
  CSampleStore::CPlace from = log.samples.GetHeadPlace();
  log.samples.AddSpans(from, all);
  const _timeb first = TimeOf(all, log.count - lost), last = TimeOf(all, log.count - 1);
  const CString reason = log.failure.IsEmpty() ? cause : log.failure;
  m_ledger.Lose(reason, lost, first, last);
  AddLine(severityError,
          ShowCount(lost) + " lost, " + ShowTime(first) + " to " + ShowTime(last) + ": " + reason);
}

std::optional<std::uint64_t> CLogTrack::OldestToGiveUp() const {
  const CGuard lock(m_mutex);
  for (const CLogPointer& log : m_logs)
    if (log->isComplete && log->users == 0) return log->sequence;
  return {};
}

void CLogTrack::GiveUp(std::uint64_t sequence) {
  const CGuard lock(m_mutex);
  const auto found = std::find_if(m_logs.begin(), m_logs.end(), [sequence](const CLogPointer& log) {
    return log->isComplete && log->users == 0 && log->sequence == sequence;
  });
  if (found == m_logs.end()) return;
  Drop(**found, "the disk is too slow");
  m_logs.erase(found);
}

std::vector<CLogTrack::CLogPointer> CLogTrack::Logs() const {
  const CGuard lock(m_mutex);
  return {m_logs.begin(), m_logs.end()};
}

// With m_mutex locked.
void CLogTrack::AddLine(char severity, const CString& text) {
  CTrackEvent event;
  event.severity = severity;
  event.text = text;
  m_events.push_back(std::move(event));
}

std::vector<CTrackEvent> CLogTrack::TakeEvents() {
  const CGuard lock(m_mutex);
  return std::exchange(m_events, {});
}

CLogLedger CLogTrack::Ledger() const {
  const CGuard lock(m_mutex);
  CLogLedger ledger = m_ledger;
  for (const CLogPointer& log : m_logs) {
    ledger.inJournal += log->InJournal();
    ledger.inMemory += log->InMemory();
  }
  return ledger;
}

std::uint64_t CLogTrack::UnsavedCount() const {
  const CGuard lock(m_mutex);
  std::uint64_t count = 0;
  for (const CLogPointer& log : m_logs) count += log->count - log->onDisk;
  return count;
}

}  // namespace vastra
