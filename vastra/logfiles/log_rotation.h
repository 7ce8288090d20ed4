// CLogRotation: removes the oldest logs of one output or summary. Part of CLogFolder (log_folder.h). Counts
// and removes only whole logs of the own naming, in the forms that are saved: a short or damaged file, a link
// and any other file are neither counted nor removed.
#pragma once

#include <cstdint>
#include <vector>

#include "vastra/logfiles/log_naming.h"
#include "vastra/logfiles/log_policy.h"

namespace vastra {

// What a rotation has done.
struct CRotation {
  std::vector<CString>
      removed;  // names of the logs that were removed in the form that counts: see CLogRotation
  std::vector<CString> faults;  // a line for each file that cannot be removed, once for each file
};

class CLogRotation {
 public:
  CLogRotation(const CLogNaming& naming, UINT maxLogs, const CLogRetention& retention)
      : m_naming(naming), m_maxLogs(maxLogs), m_retention(retention) {}

  // The log that is being saved. It is not removed.
  void Saving(const CString& name) { m_saving = name; }
  // All forms of the log are on the disk. It is the newest log now, whatever the clock says.
  void Saved(const CString& name);

  // Removes the oldest logs until the limits hold, but never the newest one. The first call lists the folder,
  // oldest first by the last write times, then by names. Appends to rotation: of an output that saves binary
  // logs, the names of those that were removed; otherwise the names of the text logs.
  void Rotate(CRotation& rotation);
  // Removes all forms of the oldest log, but not of the newest one and of the one that is being saved, to
  // free space on a full disk. Returns false if nothing was removed.
  bool RemoveOldest(CRotation& rotation);

 private:
  struct CLog {
    CString name;
    std::int64_t lastWrite = 0;
    std::uint64_t size = 0;
    bool isStuck = false;  // it could not be removed, which was reported
  };
  using CLogs = std::vector<CLog>;  // of one form, oldest first

  CLogNaming m_naming;
  UINT m_maxLogs;
  CLogRetention m_retention;
  CString m_saving;
  bool m_isListed = false;
  CLogs m_logs[2];  // by ELogForm
};

}  // namespace vastra
