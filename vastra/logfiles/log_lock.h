// CLogLock: ensures that one output or summary at a time writes the names of a naming in a folder, in all
// processes. Its file, ".vastra-KEY.lock", stays in the folder when the lock is released, and remembers the
// log that a clean stop has left unfinished. docs/file-formats.md describes the file.
#pragma once

#include <list>
#include <memory>
#include <optional>

#include "vastra/logfiles/journal_format.h"
#include "vastra/platform/file.h"
#include "vastra/platform/file_layer.h"

namespace vastra {

// A log that is not full, which the next run continues.
using CUnfinishedLog = CJournaledLog;

class CLogLock {
 public:
  CLogLock() = default;
  CLogLock(const CLogLock&) = delete;
  CLogLock& operator=(const CLogLock&) = delete;
  ~CLogLock() { Release(); }

  // Locks the naming in its folder; key is its LogKey. Returns 1, or 0 if another lock is in use, of this or
  // another process, whose logs could have the same names: other is the id of that process then, 0 if it is
  // not known. held are not looked at. Throws CFileException if the file of the lock cannot be created or the
  // folder cannot be listed. Where the file system has no locks the result is 1.
  int Take(const CString& key, const CLogNaming& naming, int& other, const std::list<CLogLock>& held = {});
  // Takes over other, which is locked. Nothing was cut off in between.
  void TakeOver(CLogLock& other);
  const CString& Key() const { return m_key; }
  void Release() { Leave(0); }  // no effect without a lock
  bool IsTaken() const { return m_file != nullptr; }
  // Takes a lock again whose file is missing, alone or with its folder. Returns and throws as Take does; 1 if
  // the file is there.
  int Renew(int& other);

  // Whether the last process that took the lock ended without Release: it was killed, or lost power.
  bool WasCutOff() const { return m_wasCutOff; }
  // The unfinished log of the last clean stop; none if there is no record of it or the record is damaged.
  std::optional<CUnfinishedLog> GetUnfinished() const { return m_unfinished; }
  // Stores log, or that there is none. It is on the disk when this returns; throws CFileException otherwise.
  void SetUnfinished(const std::optional<CUnfinishedLog>& log);

 private:
  bool OpenLocked();
  void Leave(int process);
  bool IsOwn(const CFileStatus& file) const;  // whether it is m_file
  void WriteNote(int process, bool isDurable) const;
  bool FindOther(int& other, const std::list<CLogLock>& held) const;

  std::unique_ptr<CFile> m_file;  // locked while it is open
  CFileStatus m_status;           // of m_file, when it was opened
  CString m_key, m_path;          // of the lock that was taken last
  CLogNaming m_naming;
  std::optional<CUnfinishedLog> m_unfinished;
  bool m_wasCutOff = false;
};

}  // namespace vastra
