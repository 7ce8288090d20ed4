// The key "ledger" of run --json.
#pragma once

#include "host/cli/json_output.h"
#include "host/run/run_ledger.h"

namespace vastra {

// An array with an object for each account.
CJson LedgerJson(const std::vector<CRunLedger>& ledgers);

}  // namespace vastra
