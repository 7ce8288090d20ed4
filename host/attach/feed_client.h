// CFeedClient: a connection to the feed of a logger, from the side of the reader. It never waits. A loop asks
// it what to wait for and calls Poll when that comes; an event loop, such as that of a window, does the same
// with a notifier for File and a timer for Due:
//
//     CFeedClient client(path, {{"sample"}, 100ms});
//     for (CFeedClient* one = &client; !client.HasEnded();) {
//       WaitForFeeds({&one, 1}, {}, until);
//       client.Poll();
//       while (std::optional<CFeedEvent> event = client.Take()) ...
//     }
//     ... client.Fault() ...
//
// The other side can be anything: a line has a length limit, no more is read while lines wait for Take, and a
// peer that sends no line for some time has gone.
#pragma once

#include <chrono>

#include "host/attach/feed_events.h"

namespace vastra {

// What a reader asks for. The state always comes with it: it shows that the logger is alive.
struct CClientRequest {
  std::vector<std::string> want;  // "sample", "counts", "message", "log"
  std::chrono::milliseconds interval{1000};
};

class CFeedClient {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::size_t kMostLine = std::size_t{4} << 20;
  static constexpr std::chrono::seconds kGreeting{2};  // for the first line
  static constexpr std::chrono::seconds kSilence{15};  // between two lines; the state comes every 5 seconds

  // Begins to connect to the socket.
  CFeedClient(const CString& socket, const CClientRequest& request);
  CFeedClient(const CFeedClient&) = delete;
  CFeedClient& operator=(const CFeedClient&) = delete;
  ~CFeedClient();

  // What to wait for before the next Poll: events of poll(2) on File, unless it is negative, until Due.
  int File() const { return m_file; }
  short Events() const;
  Time Due() const;

  // Connects, sends and reads as far as possible without waiting.
  void Poll();
  // The next line; empty if there is none at the moment. The first one is a hello with the right version.
  std::optional<CFeedEvent> Take();
  // The text of the line that Take has returned last, without its end.
  const std::string& Line() const { return m_line; }
  // Whether the connection is over and each line of it was taken.
  bool HasEnded() const { return m_file < 0; }
  // Why it is over; not empty then.
  const std::string& Fault() const { return m_fault; }

 private:
  void Connect();
  void Send();
  void Receive();
  void CheckTime(bool hasRead);
  bool HasLine() const { return m_lineEnd != std::string::npos; }
  void FindLine();
  std::optional<CFeedEvent> TakeLine();
  std::optional<CFeedEvent> Accept(std::optional<CFeedEvent> line);
  void End(const std::string& fault);

  CString m_socket;
  int m_file = -1;
  bool m_isConnected = false, m_isGreeted = false;
  bool m_isClosed = false;  // by the other side, or by an error, which is in m_fault
  std::string m_request;    // what is not sent yet
  std::string m_bytes;      // that were read, from m_begin on
  std::string m_line;       // that was taken last
  std::size_t m_begin = 0, m_searched = 0;
  std::size_t m_lineEnd = std::string::npos;  // of the line at m_begin, once it is there
  Time m_deadline;                            // for the next line
  Time m_retry;                               // of a connection to a logger whose queue is full
  std::string m_fault;
};

}  // namespace vastra
