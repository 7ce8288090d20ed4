// CHistoryCatalogues: the catalogues of the logs that requests ask for, shared by all of them. A catalogue
// costs a look at each log when it is made, and little when it looks again.
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

#include "host/web/web_answer.h"
#include "vastra/history/catalogue.h"

namespace vastra {

// The logs of a logger, or of a folder.
struct CHistorySource {
  std::string name;
  std::vector<std::string> folders;
  bool isRecursive = false;
  bool isKnown = true;  // false: where its logs are is not known
};

using CSharedLogs = std::shared_ptr<const std::vector<CHistoryLog>>;

struct CCatalogueLimits {
  std::chrono::milliseconds fresh{1000};          // a list that is older is made again,
  int share = 10;                                 // if it is also so many times as old as the look took
  std::chrono::milliseconds unused{10 * 60'000};  // a catalogue that was not used for so long is dropped
  std::size_t most = 50;                          // of catalogues; the one that was not used for longest goes
};

// From any thread.
class CHistoryCatalogues {
 public:
  explicit CHistoryCatalogues(const CCatalogueLimits& limits = {}) : m_limits(limits) {}
  CHistoryCatalogues(const CHistoryCatalogues&) = delete;
  CHistoryCatalogues& operator=(const CHistoryCatalogues&) = delete;

  // The logs of the source, which do not change any more. Looks at the folders if the list is not fresh. If
  // another thread is looking, the list as it was is returned; without one, this thread waits for that one.
  // Null if isStopped has ended the wait.
  CSharedLogs Logs(const CHistorySource& source, const CWebStop& isStopped);

  // Frees what was not used for long. Logs does so as well; to be called now and then if no requests come.
  void DropUnused();

 private:
  using Clock = std::chrono::steady_clock;
  struct CEntry {
    CCatalogue catalogue;  // of the thread that looks
    bool isLooking = false;
    CSharedLogs logs;  // null until the first look has ended
    Clock::time_point freshUntil, used;
  };
  using CSharedEntry = std::shared_ptr<CEntry>;

  CSharedEntry EntryOf(const CHistorySource& source);
  std::vector<CSharedEntry> TakeUnused();
  void Look(std::unique_lock<std::mutex>& lock, CEntry& entry);

  const CCatalogueLimits m_limits;
  std::mutex m_mutex;  // of what follows; no folder is looked at under it
  std::condition_variable m_looked;
  std::map<std::pair<std::vector<std::string>, bool>, CSharedEntry> m_entries;  // by folders and isRecursive
};

}  // namespace vastra
