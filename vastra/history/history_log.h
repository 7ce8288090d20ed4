// CHistoryLog: a log in a catalogue, and all that a reader of its rows needs to know of it.
#pragma once

#include <memory>
#include <vector>

#include "vastra/history/moment.h"
#include "vastra/logfiles/log_layout.h"
#include "vastra/logfiles/sample_store.h"

namespace vastra {

// The variables of a log, in the order of its values. Logs with the same names share one list.
using CSharedNames = std::shared_ptr<const std::vector<CString>>;

// The samples of a journal up to a moment, which do not change any more.
struct CJournalSamples {
  std::shared_ptr<const CSampleStore> store;  // owns the bytes of spans
  CSampleSpans spans;
};

struct CHistoryLog {
  CString path = {};
  CString fault = {};       // why the log cannot be read, as one line without the path; empty if it can
  std::uint64_t size = 0;   // of the file, in bytes
  CSharedNames names = {};  // null with a fault
  std::uint64_t samples = 0;
  CMoment first = 0, last = 0;  // the earliest and the latest of its samples; 0 without samples
  bool isJournal = false;
  bool isOrdered = true;  // the times of the samples never go backwards

  // For the readers of rows.
  _timeb start = {};                                    // of the first sample
  CFileStatus status = {};                              // of the file when it was looked at
  std::shared_ptr<const CLogLayout> layout = {};        // of a log
  std::shared_ptr<const CJournalSamples> journal = {};  // of a journal

  bool Meets(const CMomentRange& range) const { return samples && first < range.to && last >= range.from; }
};

}  // namespace vastra
