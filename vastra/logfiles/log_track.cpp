#include "vastra/logfiles/log_track.h"

#include <unistd.h>

#include <algorithm>

#include "vastra/core/messenger.h"
#include "vastra/logfiles/keeper_state.h"
#include "vastra/logfiles/log_name.h"
#include "vastra/logfiles/log_time.h"

namespace vastra {
namespace {

constexpr std::size_t kLogsToWaitFor = 2;  // complete ones, for a writer of samples that can wait

// process: the id of a process; 0 if it is not known.
CString Writer(int process) {
  if (process == ::getpid()) return "another output of this process";
  return process ? CString("process " + std::to_string(process)) : CString("another process");
}

}  // namespace

CLogTrack::CLogTrack(CKeeperState& keeper, const CTrackSettings& settings)
    : m_keeper(keeper),
      m_settings(settings),
      m_folder(settings.naming, settings.maxLogs, settings.retention) {}

CString CLogTrack::Lock(const CString& key) {
  m_key = key;
  std::list<CLogLock>& held = m_keeper.heldLocks;
  const auto own =
      std::find_if(held.begin(), held.end(), [&key](const CLogLock& lock) { return lock.Key() == key; });
  if (own != held.end()) {
    m_lock.TakeOver(*own);
    held.erase(own);
    return {};
  }
  try {
    int other = 0;
    if (m_lock.Take(key, m_settings.naming, other, held)) return {};
    return m_settings.naming.Folder() + ": " + Writer(other) + " already writes logs with these names";
  } catch (const CFileException& fault) {
    return fault.m_path + ": " + fault.Text();
  }
}

void CLogTrack::HoldLock() {
  if (m_lock.IsTaken()) m_keeper.heldLocks.emplace_back().TakeOver(m_lock);
}

bool CLogTrack::Append(const CLogSample& sample) {
  CGuard lock(m_mutex);
  CLogPointer log = m_collected;
  if (!log) {
    log = std::make_shared<CKeptLog>(m_keeper.pool);
    log->names = m_settings.varNames;
    log->number = m_nextNumber++;
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

bool CLogTrack::NamesOtherLog(const CLogSample& sample) const {
  const CLogNaming& naming = m_settings.naming;
  if (m_taken > 0 || !m_collected || naming.ByTime()) return false;
  const auto nameOf = [&](const CSampleRecord& first) {
    return CreateFileNameFromVar(naming.nameVariable, m_settings.varNames, first, naming.dwordName,
                                 naming.prefix);
  };
  const CSampleRecord record = {sample.m_time, reinterpret_cast<const char*>(sample.m_values.GetData()),
                                static_cast<std::uint32_t>(sample.m_values.GetSize())};
  return !(nameOf(record) == nameOf(m_collected->samples.GetHead()));
}

void CLogTrack::EndLog() {
  Complete();
  if (!m_keeper.policy.waits) return;
  CGuard lock(m_mutex);
  WaitUntil(lock, std::chrono::steady_clock::now() + m_keeper.policy.closeWithin,
            [this] { return m_logs.size() < kLogsToWaitFor || !m_logs[0]->failure.IsEmpty(); });
}

// Waits for the writer thread; lock is that of the mutex, which done is called with.
void CLogTrack::WaitUntil(CGuard& lock, CKeeperTime until, const std::function<bool()>& done) {
  for (;;) {
    const CKeeperTime part = std::min(until, std::chrono::steady_clock::now() + kTellPause);
    if (m_changed.wait_until(lock, part, done) || part == until) return;
    lock.unlock();
    m_keeper.TellWaiting();
    lock.lock();
  }
}

// Leaves the log to the writer thread.
void CLogTrack::Complete() {
  std::uint64_t bytes = 0;
  {
    const CGuard lock(m_mutex);
    if (!m_collected) return;
    m_collected->isComplete = true;
    m_collected->sequence = m_keeper.NextSequence();
    bytes = m_collected->bytes = m_collected->samples.GetMemory();
    m_keeper.Hold(bytes);
    m_collected = nullptr;
    for (const CLogPointer& log : m_logs) log->nextTry = {};
  }
  m_keeper.Wake();
  m_keeper.LimitHeld(bytes);
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
    for (const CLogPointer& log : m_logs) log->nextTry = log->nextJournal = {};
  }
  Complete();
  m_keeper.Wake();
  m_keeper.HaveSample();
  std::deque<CLogPointer> left;  // closes the files of their journals without the mutex
  CGuard lock(m_mutex);
  WaitUntil(lock, m_keeper.CloseBy(), [this] { return m_logs.empty() || IsSafe(); });
  left = m_logs;
  while (!m_logs.empty()) Drop(m_logs.begin(), "the disk did not answer in time");
}

// Whether waiting longer would make no difference: the logs cannot be saved, also when Close has tried them
// again, and the journal has all.
bool CLogTrack::IsSafe() const {
  for (const CLogPointer& log : m_logs) {
    if (log->nextTry == CKeeperTime{} || log->failure.IsEmpty()) return false;
    if (!log->IsSaved()) break;  // the logs after it wait for it
  }
  return std::all_of(m_logs.begin(), m_logs.end(),
                     [](const auto& log) { return std::max(log->synced, log->onDisk) == log->count; });
}

// Removes a log whose samples that are not on the disk are lost now, or left in the journal. Logs after one
// that could not be saved share its reason.
void CLogTrack::Drop(std::deque<CLogPointer>::iterator place, const CString& cause) {
  CKeptLog& log = **place;
  const std::uint64_t journaled = log.InJournal(), lost = log.InMemory();
  if (lost) {
    CSampleSpans all;
    CSampleStore::CPlace from = log.samples.GetHeadPlace();
    log.samples.AddSpans(from, all);
    const _timeb first = TimeOf(all, log.count - lost), last = TimeOf(all, log.count - 1);
    if (!m_logs[0]->failure.IsEmpty()) m_failure = m_logs[0]->failure;
    const CString& reason = m_failure.IsEmpty() ? cause : m_failure;
    m_ledger.Lose(reason, lost, first, last);
    m_dropped.lost.Lose(reason, lost, first, last);
  }
  m_ledger.inJournal += journaled;
  m_dropped.journaled += journaled;
  log.isDropped = true;
  m_keeper.Release(log.bytes);
  m_logs.erase(place);
}

// Lines about the logs that were dropped since the last ones, now and then. With m_mutex locked.
void CLogTrack::ReportDropped() {
  const CKeeperTime now = std::chrono::steady_clock::now();
  if (m_dropped.journaled + m_dropped.lost.lost == 0) return;
  if (!m_closing && now < m_dropped.nextReport) return;
  for (const CLogLoss& loss : m_dropped.lost.losses)
    AddLine(severityError, ShowCount(loss.rows) + " lost, " + ShowTime(loss.first) + " to " +
                               ShowTime(loss.last) + ": " + loss.cause);
  if (m_dropped.journaled)
    AddLine(severityWarning,
            ShowCount(m_dropped.journaled) + " in the journal only: the next start makes a log of them");
  m_dropped = {};
  m_dropped.nextReport = now + m_keeper.policy.retry;
}

std::optional<std::uint64_t> CLogTrack::OldestToGiveUp(bool evenUntried) const {
  const CGuard lock(m_mutex);
  if (m_logs.empty() || (!evenUntried && m_logs[0]->failure.IsEmpty())) return {};
  for (const CLogPointer& log : m_logs)
    if (log->isComplete && log->users == 0) return log->sequence;
  return {};
}

void CLogTrack::GiveUp(std::uint64_t sequence) {
  CLogPointer given;  // closes the file of its journal without the mutex
  const CGuard lock(m_mutex);
  const auto found = std::find_if(m_logs.begin(), m_logs.end(), [sequence](const CLogPointer& log) {
    return log->isComplete && log->users == 0 && log->sequence == sequence;
  });
  if (found == m_logs.end()) return;
  given = *found;
  Drop(found, "the disk is too slow");
}

std::vector<CLogTrack::CLogPointer> CLogTrack::Logs() const {
  const CGuard lock(m_mutex);
  return {m_logs.begin(), m_logs.end()};
}

std::shared_ptr<CJournalWriter> CLogTrack::JournalOf(const CKeptLog& log) const {
  const CGuard lock(m_mutex);
  return log.journal;
}

std::vector<CString> CLogTrack::LeftJournals(const CKeptLog& log) const {
  const CGuard lock(m_mutex);
  return log.leftJournals;
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
  ReportDropped();
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
