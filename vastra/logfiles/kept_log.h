// CKeptLog: a log of a track (log_track.h) from its first sample until all of its files are on the disk.
#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "vastra/logfiles/csv_format.h"
#include "vastra/logfiles/journal.h"
#include "vastra/logfiles/log_naming.h"

namespace vastra {

using CKeeperTime = std::chrono::steady_clock::time_point;

// A file of a kept log.
struct CKeptFile {
  std::uint64_t samples = 0;  // in it; 0: there is no file
  bool isWritten = false;     // by this run
  bool isClosed = false;      // reported as complete
};

struct CKeptLog {
  explicit CKeptLog(CSampleBlockPool& pool) : samples(CSampleStore::kBlockSize, &pool) {}

  bool IsSaved() const { return onDisk == count; }
  bool HasFile() const { return files[0].samples + files[1].samples > 0; }
  std::uint64_t Base() const { return continued ? continued->samples : 0; }
  std::uint64_t InJournal() const { return std::max(journaled, onDisk) - onDisk; }
  std::uint64_t InMemory() const { return count - std::max(journaled, onDisk); }

  // Constant once the track has the log.
  CStringArray names;        // of the variables
  std::uint64_t number = 0;  // of the logs of the track in order; the numbers of its journals follow from it
  std::optional<CJournaledLog> continued;  // file of an earlier run with the first samples

  // Guarded by the mutex of the track. Counts are of samples from the first one of the log on.
  CSampleStore samples;         // the writer and the journal read them without the mutex up to a count
  std::uint64_t count = 0;      // in the log
  std::uint64_t onDisk = 0;     // in the file of the form that counts
  std::uint64_t journaled = 0;  // up to here in the journal, or in the file that it continues
  std::uint64_t synced = 0;     // the same, and synced
  CSampleStore::CPlace basePlace, journalPlace;  // in samples, after these samples
  std::shared_ptr<CJournalWriter> journal;
  std::vector<CString> leftJournals;  // paths of earlier ones, which may still be there
  std::uint64_t bytes = 0;            // of a complete log that is counted as held
  std::uint64_t sequence = 0;         // of complete logs: the order in which they ended
  bool isComplete = false;
  bool wantsImage = false;  // its samples shall be in a file although it is not complete
  bool isCut = false;       // the end of the run has ended it before it was full
  bool isDropped = false;   // the track has no account of it any more
  int users = 0;            // threads that read the samples without the mutex
  CKeeperTime nextTry{}, nextJournal{};
  CString failure;        // why it could not be saved
  bool isAtRisk = false;  // its newest samples could not be journaled

  // Of the writer thread.
  CString name;                           // of its files; empty: not chosen yet
  CKeptFile files[std::size(kLogForms)];  // by form
  bool isListed = false;                  // the rotation knows it
  CCsvText text;                          // of a log that grows, up to textPlace
  CSampleStore::CPlace textPlace;

  // The name that its file has or is about to get; it stays when a save has failed, because the file may have
  // got it, and a recovery looks at the file. Guarded by journalMutex, which is locked before the mutex of
  // the track.
  std::mutex journalMutex;
  std::optional<CJournaledLog> named;
  std::uint64_t journals = 0;  // made for it; of the journal thread
};

}  // namespace vastra
