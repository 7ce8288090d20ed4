// CWrittenFiles: which log files a run has written. A file that was written over counts; one that the
// rotation has removed does not.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/run/run_observer.h"

namespace vastra {

class CWrittenFiles : public CRunObserver {
 public:
  // Absolute paths, in byte order, of those that still exist. Of two names of one file the first counts.
  std::vector<std::string> Existing() const;

  void LogClosed(const CLogSource&, const CSavedLog& log) override { Add(log.path); }
  void LogGrew(const CLogSource&, const CSavedLog& log) override { Add(log.path); }
  void LogNotSaved(const CLogSource&, const CUnsavedLog& log) override {
    if (log.leftShortFile) Add(log.path);
  }

 private:
  void Add(const CString& path);

  std::set<std::string> m_paths;
  std::size_t m_limit = 1024;  // paths beyond which those of removed files are forgotten
};

}  // namespace vastra
