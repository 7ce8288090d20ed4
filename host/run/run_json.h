// The JSON of a run's counts and accounts, for run --json and for the feed.
#pragma once

#include "host/common/json_text.h"
#include "host/common/scan_loop.h"
#include "host/run/run_ledger.h"

namespace vastra {

// An object with read, failedReads, late and failedWrites.
CJson CountsJson(const CScanCounts& counts);

// An array with an object for each account.
CJson LedgerJson(const std::vector<CRunLedger>& ledgers);

}  // namespace vastra
