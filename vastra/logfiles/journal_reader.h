// Reads journals: the recovery of the keeper after a kill or a power cut, and the hosts, which examine
// journals as they examine logs. Finds the journals in a folder.
#pragma once

#include <vector>

#include "vastra/logfiles/journal_format.h"
#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/file.h"

namespace vastra {

// What a journal contains beside its samples.
struct CJournalContent {
  CJournalHead head;
  std::optional<CJournaledLog> named;  // the last name that the samples' log got, before the log was saved
  std::uint64_t goodBytes = 0;         // up to the end of the last whole record
  std::uint64_t tornBytes = 0;         // after that: an incomplete record, or bytes that never were written
  // Why the file cannot be read as a journal, as one line without the file name; empty if it can be read.
  CString fault;
  bool isHeadTorn = false;  // the fault is that the file ends, or has only zeros, inside or after its head:
                            // it has no samples

  // The log that has the samples, or is about to have them: the last name, or the log that they continue.
  const std::optional<CJournaledLog>& Log() const { return named ? named : head.continues; }
  // Whether that is the log on the disk that the samples are added to. It is not if that file was missing, so
  // that the log has got a file of its own. The times of a text log that was read back depend on the time
  // zone of the run.
  bool GoesOn() const;
};

// Reads the journal at path, or all of file from its beginning, and puts the samples of its whole records
// into samples, in order. Records after the first one that is not whole are not read. 1, or 0 with samples
// empty and the reason in content.fault.
VASTRA_API int ReadJournal(const CString& path, CJournalContent& content, CSampleStore& samples);
VASTRA_API int ReadJournal(CFile& file, CJournalContent& content, CSampleStore& samples);
// The same for a journal that ReadJournal has read before and that may have grown since: appends the samples
// of the new whole records. On 0 samples has those that it had.
VASTRA_API int ReadJournalOn(CFile& file, CJournalContent& content, CSampleStore& samples);

// Whether the file at path begins as a journal. False also if it cannot be read.
VASTRA_API bool IsJournal(const CString& path);

// Of the journals with the same number / kJournalsOfALog, one has all samples of their log; the others were
// given up after a failed sync.
inline constexpr std::uint64_t kJournalsOfALog = 1000;

// A journal is one of a series of files for the same output or summary: .vastra-KEY-N.journal.
struct CJournalEntry {
  CString key;  // 16 hexadecimal digits
  std::uint64_t number = 0;
};

// The journal of a file with this name, without the directory; false if it is not the name of a journal.
VASTRA_API bool ParseJournalFile(std::string_view name, CJournalEntry& entry);
// The name of the file, without the directory.
VASTRA_API CString JournalFile(const CString& key, std::uint64_t number);
// The journals in directory, sorted by key and then by number. Empty if the directory cannot be read.
VASTRA_API std::vector<CJournalEntry> ListJournals(const CString& directory);

}  // namespace vastra
