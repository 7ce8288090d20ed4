// CJournalFollower: the journal of a running logger, read once and then followed to its end. The file stays
// open, so that its last records can be read after the logger has removed it.
#pragma once

#include <optional>

#include "vastra/history/log_scan.h"
#include "vastra/logfiles/journal_reader.h"

namespace vastra {

class CJournalFollower {
 public:
  explicit CJournalFollower(const CString& path);

  // Reads what was added since the last call. Returns whether there is anything new.
  bool Follow();

  const CString& Path() const { return m_path; }
  const CString& Fault() const { return m_fault; }
  // Whether the journal has no samples because it was removed before it was opened, or its head is not whole.
  bool IsEmpty() const { return m_isEmpty; }
  // Whether the status is that of another file than the one that is open.
  bool IsOther(const CFileStatus& status) const;
  std::size_t Samples() const { return m_store ? m_store->GetCount() : 0; }

  // The log that has samples of the journal or will have them, as a file of the folder.
  std::optional<CString> LogFile() const;
  // How many samples at the beginning of the journal are in that log.
  std::uint64_t SamplesIn(const CHistoryLog& log, CNamesPool& pool) const;

  // The journal as a log without its first skip samples.
  CHistoryLog MakeLog(std::uint64_t skip, CNamesPool& pool);

 private:
  void Reset();

  CString m_path, m_fault;
  CFile m_file;
  bool m_isEmpty = false;
  CFileStatus m_status;
  CJournalContent m_content;
  std::shared_ptr<CSampleStore> m_store;
  CHistoryLog m_log;  // that was made last, of m_made samples without m_skipped
  std::uint64_t m_made = 0, m_skipped = 0;
};

}  // namespace vastra
