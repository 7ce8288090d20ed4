// CLogRotation: removes the oldest logs of one output or summary. Part of CLogFolder (log_folder.h). Counts
// and removes only whole logs of the own naming, in the forms that are saved: a short or damaged file, a link
// and any other file are neither counted nor removed.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "vastra/logfiles/log_naming.h"
#include "vastra/logfiles/log_policy.h"

namespace vastra {

// What a rotation has done.
struct CRotation {
  // Names of logs without extension. Of an output that saves binary logs, each was removed as a binary log;
  // of any other, as a text log.
  std::vector<CString> removed;
  std::vector<CString> missing;  // the same of logs that somebody else has removed
  std::vector<CString> faults;   // a line for each file that cannot be removed, once for each file
};

class CLogRotation {
 public:
  CLogRotation(const CLogNaming& naming, UINT maxLogs, const CLogRetention& retention)
      : m_naming(naming), m_maxLogs(maxLogs), m_retention(retention) {}

  // The log that is being saved. It is not removed until another one is saved.
  void Saving(const CString& name) { m_saving = name; }
  // All forms of the log are on the disk. It is the newest log now, whatever the clock says.
  void Saved(const CString& name);

  // Removes the oldest logs until the limits hold, but never the newest one of a form. The first call of this
  // or Saved lists the folder: oldest first by the last write times, then by names. A file that cannot be
  // removed is not counted, so that no other log is removed in its place; each call tries again. The age of a
  // log is not limited while the clock, or that of its last write, is before 2020 or after 2037.
  void Rotate(CRotation& rotation);
  // Removes all forms of the oldest log, but not the newest log of a form and the one that is being saved, to
  // free space on a full disk. Returns false if nothing was removed.
  bool RemoveOldest(CRotation& rotation);

 private:
  struct CLog {
    CString name;
    std::int64_t lastWrite;
    std::uint64_t size;

    bool operator<(const CLog& other) const {
      return lastWrite != other.lastWrite ? lastWrite < other.lastWrite : name < other.name;
    }
  };
  using CLogs = std::vector<CLog>;  // oldest first
  struct CForm {
    CLogs logs;
    CLogs stuck;             // those that could not be removed
    std::set<CString> told;  // names of stuck logs that were reported
  };

  CForm& Of(ELogForm form) { return m_forms[static_cast<int>(form)]; }
  bool CountsRows(ELogForm form) const { return (form == ELogForm::binary) == m_naming.saveRp; }
  bool IsSaving(const CLog& log) const { return log.name == m_saving; }
  bool IsAboveLimit() const;
  bool List();
  void BeginRotation();
  void ForgetMissing(CRotation& rotation);
  CLogs::iterator Oldest(ELogForm form);
  std::uint64_t Remove(ELogForm form, CLogs::iterator log, CRotation& rotation);
  bool RemoveOldestLog(CRotation& rotation, std::uint64_t& bytes);
  void RemoveMany(ELogForm form, CRotation& rotation);
  void RemoveOld(ELogForm form, CRotation& rotation);
  void RemoveBytes(std::uint64_t bytes, CRotation& rotation);
  std::uint64_t BytesToRemove() const;

  CLogNaming m_naming;
  UINT m_maxLogs;
  CLogRetention m_retention;
  CString m_saving;
  bool m_isListed = false;
  CForm m_forms[2];  // by ELogForm; empty if the form is not saved
};

}  // namespace vastra
