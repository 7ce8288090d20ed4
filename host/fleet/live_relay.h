// CLiveRelay: what the loggers of this machine do, for whoever watches the fleet. A thread of its own reads
// their feeds and publishes a message about each once a second. Nothing is kept while there is no connection.
#pragma once

#include <condition_variable>
#include <map>
#include <thread>

#include "host/fleet/live_feed.h"
#include "host/fleet/nats_link.h"

namespace vastra {

class CLiveRelay {
 public:
  using Time = CNatsLink::Time;

  // folder: with the feeds. The link is woken when something can be taken.
  CLiveRelay(CNatsLink& link, const CFleetNode& node, const std::string& folder);
  CLiveRelay(const CLiveRelay&) = delete;
  CLiveRelay& operator=(const CLiveRelay&) = delete;
  ~CLiveRelay();

  // The paths of logs that were closed, and lines for the log, since the last call; from any thread.
  std::vector<std::string> TakeClosed() { return Take(m_closed); }
  std::vector<std::string> TakeFaults() { return Take(m_faults); }

 private:
  void Main();
  void Turn(Time now);
  void Search(Time now);
  void Leave(std::vector<std::string>& list, const std::string& text);
  std::vector<std::string> Take(std::vector<std::string>& list);

  CNatsLink& m_link;
  const CFleetNode m_node;
  const CLoggerFolders m_folders;
  const CLiveFeed::CHearers m_hearers;

  // Of the thread.
  std::map<std::string, CLiveFeed> m_feeds;  // by the names of the loggers
  Time m_searchDue{};
  CString m_fault;  // of the search, that was told

  std::mutex m_lock;  // of what follows
  std::condition_variable m_changed;
  bool m_isEnding = false;
  std::vector<std::string> m_closed, m_faults;
  std::thread m_thread;
};

}  // namespace vastra
