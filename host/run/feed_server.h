// CFeedServer: the thread of the feed, with its socket and readers. Nothing in it waits but poll.
#pragma once

#include <atomic>
#include <thread>

#include "host/feed/feed_port.h"
#include "host/run/run_feed_content.h"

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
  void Main();
  void Pass();

  const CFeedSource& m_source;
  const CString m_path;  // of the socket
  const CFeedOwner m_owner;
  std::unique_ptr<CRunFeedContent> m_pContent;
  std::unique_ptr<CFeedPort> m_pPort;
  CDescriptor m_wake;  // an eventfd
  std::vector<pollfd> m_polled;
  std::atomic<bool> m_isEnding{false};
  std::thread m_thread;
};

}  // namespace vastra
