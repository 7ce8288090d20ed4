// CCatalogueFolder: the logs and journals of one folder, from one scan of the catalogue to the next.
#pragma once

#include <map>
#include <memory>

#include "vastra/history/journal_follower.h"

namespace vastra {

class CCatalogueFolder {
 public:
  // key: the path without links, which identifies the folder.
  CCatalogueFolder(CString path, CString key) : m_path(std::move(path)), m_key(std::move(key)) {}

  const CString& Path() const { return m_path; }
  const CString& Key() const { return m_key; }

  // Looks at the folder. Returns whether anything has changed. The journals first, then the logs, then the
  // ends of the journals: a log that was saved meanwhile has its name in its journal, which is still open.
  bool Scan(bool isRecursive, CNamesPool& pool);

  // Of the last scan: the logs by the bytes of their names, then the journals.
  const std::vector<CHistoryLog>& Logs() const { return m_logs; }
  const std::vector<CHistoryLog>& Journals() const { return m_journalLogs; }
  std::vector<CString> Subfolders() const;  // their names, sorted
  // errno of a folder that cannot be listed, else 0, and the folder with this fault.
  int Error() const { return m_error; }
  const CHistoryLog& Fault() const { return m_fault; }
  const CHistoryLog* FindLog(const CString& file) const;  // null if there is none

 private:
  using CKey = std::pair<CString, std::uint64_t>;  // of a journal: the key and the number in its name

  bool OpenJournals();
  bool FollowJournals();
  bool ListLogs(bool isRecursive);
  void LookAtLogs(std::int64_t lookedAt, CNamesPool& pool);
  std::vector<CJournalFollower*> BestJournals() const;
  void MakeJournalLogs(CNamesPool& pool);

  CString m_path, m_key;
  int m_error = 0;
  CHistoryLog m_fault;
  std::int64_t m_listedAt = 0;          // nanoseconds since 1970
  std::vector<CFolderEntry> m_listed;   // logs and subfolders in the order of the file system
  std::vector<CFolderEntry> m_entries;  // of m_logs
  std::vector<CHistoryLog> m_logs, m_journalLogs;
  std::map<CKey, std::unique_ptr<CJournalFollower>> m_journals;
};

// Whether a log file can have been written after it was looked at, and still have the same time of its last
// write: the clocks of file systems have steps. lookedAt: nanoseconds since 1970.
bool IsFresh(const CFileStatus& status, std::int64_t lookedAt);
std::int64_t NowInNanoseconds();
// What a catalogue lists for a path that has an error of the system.
CHistoryLog FaultyLog(const CString& path, int error);

}  // namespace vastra
