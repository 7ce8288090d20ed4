// Settings that are valid but probably not intended.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

// A line for each, which begins with the path of its key, such as "outputs[1].maxLogs: ...".
// keepsLogs: the logs are kept by a policy.
std::vector<CString> FindWarnings(const CConfiguration& configuration, const CStageNames& names,
                                  bool keepsLogs);

}  // namespace vastra
