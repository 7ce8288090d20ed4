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
};

// Reads the journal at path, or all of file from its beginning, and puts the samples of its whole records
// into samples, in order. Records after the first one that is not whole are not read. 1, or 0 with samples
// empty and the reason in content.fault.
VASTRA_API int ReadJournal(const CString& path, CJournalContent& content, CSampleStore& samples);
VASTRA_API int ReadJournal(CFile& file, CJournalContent& content, CSampleStore& samples);

// Whether the file at path begins as a journal. False also if it cannot be read.
VASTRA_API bool IsJournal(const CString& path);

// A journal is one of a series of files for the same output or summary: .vastra-KEY-N.journal.
struct CJournalEntry {
  CString key;  // 16 hexadecimal digits
  std::uint64_t number = 0;
};

// The name of the file, without the directory.
VASTRA_API CString JournalFile(const CString& key, std::uint64_t number);
// The journals in directory, sorted by key and then by number. Empty if the directory cannot be read.
VASTRA_API std::vector<CJournalEntry> ListJournals(const CString& directory);

}  // namespace vastra
