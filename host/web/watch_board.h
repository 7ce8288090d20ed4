// What the thread that hears the feeds shares with the threads that answer.
#pragma once

#include <map>
#include <mutex>

#include "host/web/logger_record.h"

namespace vastra {

// The lock is held for copies only, never while something is made, sent or waited for.
struct CWatchBoard {
  std::mutex lock;
  std::map<std::string, std::shared_ptr<CLoggerRecord>, std::less<>> loggers;
  std::uint64_t changes = 1;  // how often loggers came or went
  std::string searchFault;    // why loggers may be missing; empty: none
  CTextPtr list;              // the newest event loggers; null while nobody asks for it
  std::uint64_t beats = 0;    // how often the time was to be told

  // Null for a name that is not there. The caller has the lock.
  std::shared_ptr<CLoggerRecord> Find(std::string_view name) const {
    const auto found = loggers.find(name);
    return found == loggers.end() ? nullptr : found->second;
  }
};

}  // namespace vastra
