// CLogFolder: the logs of one output or summary in its folder, for a keeper of logs (log_keeper.h). No log
// takes the name of a log that is there, each file is written whole or not at all, and only whole logs of the
// own naming are counted and removed. One thread at a time calls it.
//
//     CLogFolder folder(naming, maxLogs, retention);
//     folder.RemoveLeftovers();
//     for each log:
//       name = folder.NextName(first sample, names);
//       for each form that is saved:
//         folder.Save(name, form, false, write, tellJournal) or take the next name
//       folder.Saved(name), folder.Rotate(rotation);
#pragma once

#include <functional>
#include <set>
#include <vector>

#include "vastra/logfiles/log_policy.h"
#include "vastra/logfiles/log_rotation.h"
#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

class CLogFolder {
 public:
  // maxLogs is the number of logs of each form that stay.
  CLogFolder(const CLogNaming& naming, UINT maxLogs, const CLogRetention& retention)
      : m_naming(naming), m_rotation(naming, maxLogs, retention) {}

  CString PathOf(const CString& name, ELogForm form) const { return m_naming.PathOf(name, form); }

  // Removes the temporary files of the own naming that no process is writing. Returns a line for each one
  // that cannot be removed. Call it when the folder is locked (CLogLock).
  std::vector<CString> RemoveLeftovers() const;

  // A name that no file of the folder has in either form. By time: the number after the highest one of that
  // hour; "99~2", "99~3", ... follow 99. By a variable: the value, then with "~2", "~3", ... after the
  // highest. A call returns the same name again until a file is saved under it. Throws CFileException if a
  // million names after the highest are in use.
  CString NextName(const CSampleRecord& first, const CStringArray& names);

  // Writes a file of the log: write fills a temporary file beside it, which is locked, synced and renamed.
  // beforeRename, if not empty, is called when the temporary file is on the disk. With replaces an older
  // image of the log may exist. Returns false if it may not and does: take the next name. Throws
  // CFileException, and what write and beforeRename throw. The temporary file is removed then, and an older
  // image is unchanged. Only if the folder cannot be synced, the new file has its name already: Save again
  // with the same name replaces it, and NextName regards the name as free.
  bool Save(const CString& name, ELogForm form, bool replaces, const std::function<void(CFile&)>& write,
            const std::function<void()>& beforeRename = {});

  // All forms of the log are on the disk. It is the newest log now.
  void Saved(const CString& name) { m_rotation.Saved(name); }
  // As in CLogRotation.
  void Rotate(CRotation& rotation) { m_rotation.Rotate(rotation); }
  bool RemoveOldest(CRotation& rotation) { return m_rotation.RemoveOldest(rotation); }

 private:
  bool IsFree(const CString& name) const;
  void UseBase(const CString& base);
  void NameIsUsed(const CString& name);

  CLogNaming m_naming;
  CLogRotation m_rotation;
  CString m_base;                // of the last name, without its number
  bool m_isListed = false;       // the folder was listed for m_base
  std::uint64_t m_number = 0;    // of the next log with that base, from 0
  CString m_nextName;            // the last one that NextName has returned, until it is used
  std::set<CString> m_unsynced;  // paths that have their names, which may not be on the disk
};

}  // namespace vastra
