// CFeedServer: the thread of the feed, with its socket and readers. Nothing in it waits but poll.
#pragma once

#include <atomic>
#include <list>
#include <thread>

#include "host/run/feed_reader.h"

struct pollfd;

namespace vastra {

class CFeedServer {
 public:
  // source must exist as long as the server.
  CFeedServer(const CFeedSource& source, const CFeedPlace& place);
  ~CFeedServer();
  CFeedServer(const CFeedServer&) = delete;
  CFeedServer& operator=(const CFeedServer&) = delete;

  // Makes the socket and starts the thread. Empty, or why that is not possible.
  CString Open();

 private:
  using Time = CFeedContent::Time;
  static constexpr std::size_t kMostReaders = 64;

  void Main();
  void Pass();
  void Poll(Time now);
  void Accept(Time now);
  void Admit(CDescriptor socket, Time now);
  void WorkAll(bool areAllDue, Time now);

  CFeedSource const& m_source;
  const CFeedOwner m_owner;
  CFeedSocket m_socket;
  CDescriptor m_wake;  // an eventfd
  std::unique_ptr<CFeedContent> m_pContent;
  std::list<CFeedReader> m_readers;
  std::vector<pollfd> m_polled;  // the wake-up, the listener, the readers in order
  Time m_acceptDue{};            // when connections are accepted again
  std::atomic<bool> m_isEnding{false};
  std::thread m_thread;
};

}  // namespace vastra
