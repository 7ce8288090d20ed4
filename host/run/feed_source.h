// CFeedSource: what the thread of the scans leaves for the thread of the feed. Everything is a shared object
// that does not change once it is there; the mutexes are held while pointers are copied.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "host/run/feed.h"
#include "host/run/feed_ring.h"
#include "host/run/live_state.h"

namespace vastra {

using CFeedNames = std::shared_ptr<const std::vector<CString>>;

// A log that was closed or could not be saved.
struct CFeedLog {
  CLogSource source;
  CString path, reason;  // reason: why it was not saved
  std::uint64_t rows = 0;
  bool isSaved = false;
  _timeb first, last;    // only of a log that was saved
  CFeedNames variables;  // null: not known
};

// The files of logs since the process started: how many were saved, how many attempts failed, and those that
// wait, by path.
struct CFeedSaves {
  static constexpr std::size_t kMostUnsaved = 100;

  struct CUnsaved {
    CString key, reason;
    std::uint64_t rows = 0;
  };
  std::uint64_t closed = 0, failed = 0;
  std::map<CString, CUnsaved> unsaved;
};

// What a configuration says.
struct CFeedFacts {
  struct CLog {
    CString key, name, folder;
    CFeedNames variables;
    bool savesBinary = false, savesText = false;
    UINT maxLogs = 0, maxSamples = 0;
  };
  struct COrigin {
    CFeedNames variables;
    CString alive;  // the variable that tells whether the node has answered; empty: none
  };
  std::int64_t period = 0;
  std::int64_t replayed = 0;  // logs that are the input in place of nodes
  std::vector<CString> nodes, writes;
  std::vector<COrigin> origins;  // one for each of nodes
  std::vector<CLog> outputs, summaries;
  bool isSmart = false;
  std::vector<std::pair<CString, CString>> units;  // of variables that have one
};

struct CFeedStatus {
  EFeedState state = EFeedState::opening;
  _timeb since;
  CString reason;
};

// The newest sample of all runs.
struct CFeedLast {
  _timeb time;
  std::chrono::steady_clock::time_point read;
};

class CFeedSource {
 public:
  using Messages = CFeedRing<CKeptMessage>;
  using Logs = CFeedRing<CFeedLog>;

  struct CView {
    std::uint64_t change = 0;  // of facts, names and live, counted
    std::shared_ptr<const CFeedFacts> facts;
    CFeedNames names;  // of the samples to come; null: the stages are not open
    std::shared_ptr<const CLiveState> live;
    std::shared_ptr<const CFeedStatus> status;
    Messages::Entry lastError;
    std::shared_ptr<const CFeedSaves> saves;
    std::optional<CFeedLast> last;  // of the runs before live
  };

  CView View() const {
    const std::lock_guard lock(m_mutex);
    return m_view;
  }
  // Calls action with the view, for changes that only move pointers.
  template <class ACTION>
  void Change(ACTION action) {
    const std::lock_guard lock(m_mutex);
    action(m_view);
  }

  Messages m_messages;
  Logs m_logs;

 private:
  mutable std::mutex m_mutex;
  CView m_view;
};

}  // namespace vastra
