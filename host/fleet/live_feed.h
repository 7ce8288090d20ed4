// CLiveFeed: the feed of one logger of this machine, and the messages about it. A feed that says more and
// more costs a small part of the time, and one that says nothing costs nothing.
#pragma once

#include <functional>
#include <memory>

#include "host/attach/feed_client.h"
#include "host/attach/find_loggers.h"
#include "host/fleet/live_message.h"

namespace vastra {

class CLiveFeed {
 public:
  using Time = CFeedClient::Time;
  struct CHearers {
    std::function<void(const std::string& path)> closed;  // a log
    std::function<void(const std::string& line)> fault;   // for the log of the service
  };

  CLiveFeed(const CLoggerPlace& place, const CHearers& hearers) : m_place(place), m_hearers(hearers) {}

  // Connects if it is time, and hears what has come. Never waits.
  void Work(Time now);
  // The message that is due; empty: none is.
  std::string TakeMessage(Time now);
  // A message was not sent: the next one has all lines.
  void SendAll() { m_allDue = {}; }
  // Whether there is neither a connection nor something to say of it.
  bool IsOver() const { return !m_client && !m_hasSpoken; }

 private:
  struct CLine {
    std::string text;  // empty: none has come
    bool isDue = false;
    bool isTold = false;  // that it is too long
  };

  bool Hear();
  void Note(const CFeedEvent& event);
  void Keep(CLine& line, const char* type);
  void End(Time now);

  const CLoggerPlace m_place;
  const CHearers& m_hearers;
  std::unique_ptr<CFeedClient> m_client;
  Time m_due{};                         // of the next look at the feed
  Time m_retry{};                       // of the next connection
  std::chrono::milliseconds m_pause{};  // before it
  std::string m_fault;                  // that was told
  std::array<CLine, kLiveLines.size()> m_lines;
  bool m_hasSpoken = false;  // in messages, since the connection was made
  std::string m_ended;       // why the connection has ended; empty: it has not
  Time m_messageDue{}, m_allDue{};
};

}  // namespace vastra
