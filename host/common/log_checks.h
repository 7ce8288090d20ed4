// Checks of the logs of a configuration before its stages open: what the policy for logs refuses, and the
// clock.
#pragma once

#include <vector>

#include "host/common/configuration.h"

namespace vastra {

// A line for each pair of outputs or summaries that could write the same files, and for each output or
// summary that could remove logs of the replay's own list. A line begins with the path of the key. A host
// that keeps its logs by a policy (keepsLogs) does not start such a configuration; another one shows the
// lines as warnings.
std::vector<CString> FindLogRefusals(const CConfiguration& configuration, bool keepsLogs);

// Why the times of samples cannot be right now: the clock is before 2020 or after 2037. Empty if they can.
CString FindClockFault();

}  // namespace vastra
