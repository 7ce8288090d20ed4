// CInbox: what a host without an event loop waits on. The messages of workers, the signals that stop it and
// the time of the next scan come in one place. Nothing is polled: the host sleeps until one of them comes.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>

#include "vastra/platform/message.h"

namespace vastra {

class CRun;

class CInbox : public CMessageTarget {
 public:
  using Time = std::chrono::steady_clock::time_point;

  CInbox();
  CInbox(const CInbox&) = delete;
  CInbox& operator=(const CInbox&) = delete;
  ~CInbox() override;

  // From any thread, and from a signal handler.
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;
  // Removes the oldest message: 1, or 0 if none has come until then. Only the thread that owns the inbox.
  int Wait(CMessage& message, Time until);
  // Can be read while a message waits, for a host that waits for other files, too.
  int File() const { return m_ends[0]; }

 private:
  bool IsReadable(Time until) const;

  int m_ends[2];                // of a pipe of whole messages, to read and to write
  std::atomic<int> m_count{0};  // of messages, so that a loop at full speed need not ask the system
};

// While the object exists SIGINT, SIGTERM and SIGHUP post messageStop to inbox. A SIGINT or SIGTERM that
// comes 0.2 s or more after the first one ends the process at once by its default action, also while the
// stages close, for the case that a driver or a disk hangs.
class CStopSignals {
 public:
  static constexpr UINT messageStop = 1000;

  explicit CStopSignals(CInbox& inbox);
  CStopSignals(const CStopSignals&) = delete;
  CStopSignals& operator=(const CStopSignals&) = delete;
  ~CStopSignals();

  static bool HaveCome();  // from any thread
};

// The first ID of the messages that a host posts to its own inbox.
constexpr UINT kHostMessages = CStopSignals::messageStop + 1;

// Drives run, which has been started, to its end. inbox is its target. show is called between the steps; it
// returns the time at which it wants to be called again even if nothing happens before. asked gets the newest
// message of the host, between two scans.
void DriveToEnd(CRun& run, CInbox& inbox, const std::function<CInbox::Time()>& show,
                const std::function<void(UINT)>& asked = {});
inline void DriveToEnd(CRun& run, CInbox& inbox) {
  DriveToEnd(run, inbox, [] { return CInbox::Time::max(); });
}

}  // namespace vastra
