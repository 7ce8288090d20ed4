// CLogLedger: the account of the samples of one output, or of the rows of one summary. At every moment
//
//     offered = unwanted + taken
//     taken + recovered = onDisk + inJournal + inMemory + lost
//
// A sample is counted once, in the safest place that it has reached.
#pragma once

#include <cstdint>
#include <vector>

#include "vastra/platform/string.h"
#include "vastra/platform/time.h"

namespace vastra {

// Samples that were lost for one cause.
struct CLogLoss {
  CString cause;  // such as the system's reason for a log that could not be saved
  std::uint64_t rows = 0;
  _timeb first, last;
};

struct CLogLedger {
  std::uint64_t offered = 0;    // samples that the stage has passed to the output
  std::uint64_t unwanted = 0;   // of these, samples that its equations or its settings keep out of the log
  std::uint64_t taken = 0;      // of these, samples for the log
  std::uint64_t recovered = 0;  // samples of an earlier run, from its journal
  std::uint64_t onDisk = 0;     // in a log that has been saved
  std::uint64_t rotated = 0;    // of these, samples of logs that were removed or replaced since
  std::uint64_t inJournal = 0;  // in a journal only, or in a journal and in memory
  std::uint64_t inMemory = 0;   // in memory only
  std::uint64_t lost = 0;       // the sum of the losses
  std::vector<CLogLoss> losses;

  // Counts rows as lost. A loss with the same cause as an earlier one extends it.
  VASTRA_API void Lose(const CString& cause, std::uint64_t rows, const _timeb& first, const _timeb& last);
  VASTRA_API CLogLedger& operator+=(const CLogLedger& other);
  bool IsBalanced() const {
    return offered == unwanted + taken && taken + recovered == onDisk + inJournal + inMemory + lost;
  }
};

}  // namespace vastra
