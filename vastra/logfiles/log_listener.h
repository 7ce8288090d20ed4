// CLogListener: the interface that reports to a host what happens to each log file. The host installs a
// listener for an output or summary stage before Open; the stage passes it to its file links. By default
// there is none. The file link calls it after each attempt to save a file.
#pragma once

#include <cstdint>

#include "vastra/platform/string.h"
#include "vastra/platform/time.h"

namespace vastra {

// A file that was saved. The binary log and its text copy are two files.
struct CSavedLog {
  int log = 0;   // which output or summary of the stage, from 0
  CString path;  // absolute
  _timeb first, last;
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
};

// A file that could not be saved.
struct CUnsavedLog {
  int log = 0;  // as in CSavedLog
  CString path;
  CString reason;  // the system's error message
  std::uint64_t samples = 0;
  bool leftShortFile = false;  // a new file stays on the disk, with a part of the log
};

class VASTRA_API CLogListener {
 public:
  virtual ~CLogListener() = default;

  // The log is complete: later samples go into another one.
  virtual void LogClosed(const CSavedLog&) {}
  // A summary archive was saved with one more row and is still open.
  virtual void LogGrew(const CSavedLog&) {}
  virtual void LogNotSaved(const CUnsavedLog&) {}

 protected:
  CLogListener() = default;
  CLogListener(const CLogListener&) = default;
  CLogListener& operator=(const CLogListener&) = default;
};

}  // namespace vastra
