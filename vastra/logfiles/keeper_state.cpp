#include "vastra/logfiles/keeper_state.h"

#include <algorithm>
#include <new>
#include <system_error>

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

constexpr std::chrono::hours kIdle{1};             // longest sleep of the writer thread
constexpr std::chrono::seconds kLeastPatience{1};  // with a thread that shall end
constexpr std::chrono::seconds kLeastTry{1};  // for the logs of a track, after others have used up the time

constexpr std::chrono::milliseconds kMemoryPause{200};  // when there is not enough memory

// Logs that the writer thread has not tried yet are held up to here, whatever the policy says.
constexpr std::uint64_t kLeastHold = std::uint64_t{4} << 20;

CKeeperTime Now() { return std::chrono::steady_clock::now(); }

}  // namespace

bool CKeeperState::Add(const std::shared_ptr<CLogTrack>& track) {
  {
    const std::lock_guard lock(m_mutex);
    m_tracks.push_back(track);
    m_closeBy = {};
  }
  const bool started = (m_writer.joinable() || Start(m_writer, &CKeeperState::RunWriter)) &&
                       (!policy.live || m_journal.joinable() || Start(m_journal, &CKeeperState::RunJournal));
  if (!started) Remove(track);
  return started;
}

void CKeeperState::Remove(const std::shared_ptr<CLogTrack>& track) {
  const std::lock_guard lock(m_mutex);
  std::erase(m_tracks, track);
}

bool CKeeperState::Start(std::thread& thread, void (CKeeperState::*run)()) {
  const CSignalsBlocked noSignals;
  const std::lock_guard lock(m_mutex);
  try {
    thread = std::thread([self = shared_from_this(), run] {
      ((*self).*run)();
      const std::lock_guard ending(self->m_mutex);
      --self->m_running;
      self->m_change.notify_all();
    });
  } catch (const std::system_error&) {
    return false;
  }
  ++m_running;
  return true;
}

void CKeeperState::Stop() {
  std::unique_lock lock(m_mutex);
  m_stop = true;
  m_hasSamples = true;
  m_hasSamples.notify_all();
  m_change.notify_all();
  const CKeeperTime until = std::max(m_closeBy, Now() + kLeastPatience);
  const auto hasEnded = [this] { return m_running == 0; };
  while (!m_change.wait_until(lock, std::min(until, Now() + kTellPause), hasEnded) && Now() < until) {
    lock.unlock();
    TellWaiting();
    lock.lock();
  }
  const bool ended = hasEnded();
  lock.unlock();
  for (std::thread* thread : {&m_writer, &m_journal})
    if (thread->joinable()) ended ? thread->join() : thread->detach();
}

CKeeperTime CKeeperState::CloseBy() {
  const std::lock_guard lock(m_mutex);
  if (m_closeBy == CKeeperTime{}) m_closeBy = Now() + policy.closeWithin;
  return std::max(m_closeBy, Now() + std::min<CKeeperTime::duration>(policy.closeWithin, kLeastTry));
}

bool CKeeperState::IsNewStep(const _timeb& time) {
  if (m_lastStep == time) return false;
  m_lastStep = time;
  return true;
}

std::vector<std::shared_ptr<CLogTrack>> CKeeperState::Tracks() const {
  const std::lock_guard lock(m_mutex);
  return m_tracks;
}

bool CKeeperState::HasKey(const CString& key) const {
  const auto tracks = Tracks();
  return std::any_of(tracks.begin(), tracks.end(), [&](const auto& track) { return track->Key() == key; });
}

void CKeeperState::Wake() {
  const std::lock_guard lock(m_mutex);
  m_wake = true;
  m_change.notify_all();
}

void CKeeperState::HaveSample() {
  if (!m_hasSamples.load(std::memory_order_relaxed) && !m_hasSamples.exchange(true))
    m_hasSamples.notify_one();
}

void CKeeperState::LimitHeld(std::uint64_t newest) {
  while (m_held > policy.hold) {
    const bool evenUntried = !policy.waits && m_held > std::max(policy.hold, kLeastHold) + newest;
    std::shared_ptr<CLogTrack> oldest;
    std::optional<std::uint64_t> sequence;
    for (const auto& track : Tracks()) {
      const std::optional<std::uint64_t> next = track->OldestToGiveUp(evenUntried);
      if (next && (!sequence || *next < *sequence)) sequence = next, oldest = track;
    }
    if (!oldest) return;  // all others are being written
    oldest->GiveUp(*sequence);
  }
}

// One log of each track after the other, so that no output waits for all logs of another one.
void CKeeperState::RunWriter() {
  CKeeperTime next = Now();
  for (;;) {
    {
      std::unique_lock lock(m_mutex);
      m_change.wait_until(lock, next, [this] { return m_wake || m_stop; });
      if (m_stop) return;
      m_wake = false;
    }
    next = Now() + kIdle;
    try {
      const auto tracks = Tracks();
      for (const auto& track : tracks) next = std::min(next, track->SaveDue(Now()));
      for (const auto& track : tracks) next = std::min(next, track->SyncJournals(Now()));
    } catch (const std::bad_alloc&) {
      next = Now() + kMemoryPause;
    }
  }
}

void CKeeperState::RunJournal() {
  for (;;) {
    m_hasSamples.wait(false);
    {
      std::unique_lock lock(m_mutex);
      m_change.wait_for(lock, policy.journal, [this] { return m_stop; });
      if (m_stop) return;
      m_hasSamples = false;  // with the mutex, so that the one of Stop stays
    }
    bool isLate = false;
    try {
      for (const auto& track : Tracks()) isLate |= track->WriteJournals(Now());
    } catch (const std::bad_alloc&) {
      isLate = true;
    }
    if (isLate) m_hasSamples = true;  // tries again after the pause
  }
}

}  // namespace vastra
