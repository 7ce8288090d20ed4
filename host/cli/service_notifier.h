// CServiceNotifier: tells the manager of services how this process is, by its notify protocol: one datagram
// to the socket that the environment variable NOTIFY_SOCKET names. Without the variable nothing is sent. No
// operation waits; a datagram that finds the socket full is lost, except that of a change of the state, which
// is sent again.
//
// The watchdog of the manager ends a process that does not call Feed in time. The loop of the scans calls it,
// and so does each wait that is known to be bounded, so that only a loop that is dead is found by it.
//
// Threads: all operations may be called from any thread.
#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <mutex>
#include <string>

namespace vastra {

class CServiceNotifier {
 public:
  using Clock = std::chrono::steady_clock;
  using Time = Clock::time_point;

  // Reads NOTIFY_SOCKET, a path or "@" and an abstract name, WATCHDOG_USEC and WATCHDOG_PID; unless isOn,
  // nothing is ever sent.
  explicit CServiceNotifier(bool isOn);
  CServiceNotifier(const CServiceNotifier&) = delete;
  CServiceNotifier& operator=(const CServiceNotifier&) = delete;
  ~CServiceNotifier();

  // Changes of the state.
  void Ready() { Change("READY=1"); }
  void Reloading();  // Ready follows when the reload is done
  void Stopping() { Change("STOPPING=1\nSTATUS=stopping: the logs are closed"); }

  // Shows text, one line, as the status of the service: when it differs from the last one, at most once a
  // second. IsStatusDue: whether a text would be looked at now.
  void Status(const std::string& text);
  bool IsStatusDue() const;
  // Tells the watchdog that the loop lives, at half its time. Cheap enough to be called in each wait.
  void Feed();
  // When Feed has something to do again; the end of time without a watchdog.
  Time NextFeed() const;

 private:
  void Change(const std::string& line);
  bool Send(const std::string& text);
  void SendUnsent();

  mutable std::mutex m_mutex;  // of all members
  int m_socket = -1;
  sockaddr_un m_address{};
  socklen_t m_length = 0;
  Clock::duration m_pause{};  // from feed to feed; 0: no watchdog
  Time m_nextFeed{}, m_nextStatus{};
  std::string m_status;  // that was sent last
  std::string m_unsent;  // the last change of the state that found the socket full
};

}  // namespace vastra
