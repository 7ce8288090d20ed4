// The connection of the watch to the feed of one logger: made again, with growing pauses, whenever it ends.
#pragma once

#include "host/attach/feed_client.h"
#include "host/web/logger_record.h"

namespace vastra {

class CLoggerConnection {
 public:
  using Time = CFeedClient::Time;

  CLoggerConnection(const CLoggerPlace& place, std::shared_ptr<CLoggerRecord> record)
      : m_place(place), m_record(std::move(record)) {}

  // Connects if it is time, hears what has come and notes it in the record, under the lock. Never waits, and
  // hears a limited part of a feed that says more and more.
  void Work(Time now, std::mutex& lock);
  // What to wait for: the client, or a time if there is none.
  CFeedClient* Client() const { return m_client.get(); }
  Time Due() const { return m_client ? Time::max() : m_retry; }

 private:
  bool Hear(Time now, std::mutex& lock);

  const CLoggerPlace m_place;
  const std::shared_ptr<CLoggerRecord> m_record;
  std::unique_ptr<CFeedClient> m_client;
  Time m_retry{};
  std::chrono::milliseconds m_pause{};  // before the next attempt
};

}  // namespace vastra
