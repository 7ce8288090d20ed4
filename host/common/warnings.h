// What the settings of a configuration allow and a user has hardly meant.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

// One line for each, with the path of its key in front, such as "outputs[1].maxLogs: ...".
std::vector<CString> FindWarnings(const CConfiguration& configuration, const CStageNames& names);

}  // namespace vastra
