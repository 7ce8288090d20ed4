// CKeeperState: what a keeper (log_keeper.h), its tracks and its two threads share. The threads hold it, too,
// because a thread that waits for a dead disk can outlast the keeper.
#pragma once

#include <atomic>
#include <condition_variable>
#include <thread>

#include "vastra/logfiles/log_keeper.h"
#include "vastra/logfiles/log_track.h"

namespace vastra {

constexpr std::chrono::milliseconds kTellPause{250};  // from TellWaiting to TellWaiting

class CKeeperState : public std::enable_shared_from_this<CKeeperState> {
 public:
  explicit CKeeperState(const CLogPolicy& thePolicy) : policy(thePolicy) {}

  const CLogPolicy policy;
  CSampleBlockPool pool;  // of the samples of all logs

  // On the thread of the scans.
  // Starts the threads. False: there is none for them, and the track was not added.
  bool Add(const std::shared_ptr<CLogTrack>& track);
  void Remove(const std::shared_ptr<CLogTrack>& track);
  // Ends the threads; one that does not end in time is left alone.
  void Stop();
  // Until when the logs of a track that closes may wait for the disk: closeWithin after the first call since
  // the last track was added, but a second at least, for one whose disk is well.
  CKeeperTime CloseBy();
  // Tells the host that the thread of the scans still waits.
  void TellWaiting() { m_isStopAsked = policy.waiting && policy.waiting(); }
  bool IsStopAsked() const { return m_isStopAsked; }  // by the host, when it was told last
  // Whether a step of the clock to time was not reported yet.
  bool IsNewStep(const _timeb& time);

  // From any thread.
  std::vector<std::shared_ptr<CLogTrack>> Tracks() const;
  bool HasKey(const CString& key) const;  // whether a track has it
  void Wake();                            // the writer thread has something to do
  void HaveSample();                      // the journal thread has something to do; cheap
  std::uint64_t NextSequence() { return m_sequence++; }
  void Hold(std::uint64_t bytes) { m_held += bytes; }  // of a complete log that is not on the disk
  void Release(std::uint64_t bytes) { m_held -= bytes; }
  // Gives up the oldest logs while more than the policy's hold are held. newest: the bytes of the log that
  // has just become complete, which the writer thread gets the time to try.
  void LimitHeld(std::uint64_t newest);
  // From here on a full disk costs old logs.
  bool IsNearLimit() const { return m_held > policy.hold / 2; }

  CString openFault;
  bool holdsLocks = false;
  std::list<CLogLock> heldLocks;                        // of tracks that were closed since then
  std::vector<std::shared_ptr<CLogTrack>> otherTracks;  // of journals without an open output or summary

 private:
  void RunWriter();
  void RunJournal();
  bool Start(std::thread& thread, void (CKeeperState::*run)());

  mutable std::mutex m_mutex;  // of the members up to m_running
  std::condition_variable m_change;
  std::vector<std::shared_ptr<CLogTrack>> m_tracks;
  bool m_wake = false, m_stop = false;
  int m_running = 0;  // threads

  std::thread m_writer, m_journal;
  std::atomic<bool> m_hasSamples{false};
  std::atomic<std::uint64_t> m_held{0}, m_sequence{0};
  CKeeperTime m_closeBy{};
  std::atomic<bool> m_isStopAsked{false};
  _timeb m_lastStep;
};

}  // namespace vastra
