// The accounts of a run: where the samples of each output and the rows of each summary are.
#pragma once

#include <vector>

#include "vastra/logfiles/log_keeper.h"

namespace vastra {

struct CRunLedger {
  CString name;  // of the output or summary, as the user calls it
  bool isSummary = false;
  CLogLedger ledger;
};

// The sums over all accounts.
struct CLedgerSums {
  std::uint64_t recovered = 0, onDisk = 0, inJournal = 0, lost = 0;
};

CLedgerSums Sum(const std::vector<CRunLedger>& ledgers);

// Adds more to all. The account of the nth output of a name is added to that of the nth output with this name
// in all, and so with summaries; those that all does not have come at its end.
void Merge(std::vector<CRunLedger>& all, const std::vector<CRunLedger>& more);

// "12 rows lost (No space left on device)", with each cause once; empty if no row is lost.
CString LossText(const std::vector<CRunLedger>& ledgers);

}  // namespace vastra
