// Settings of a driver as they are typed on a command line: FIELD=VALUE, the fields by the names that they
// have in a configuration.
#pragma once

#include <vector>

#include "vastra/plc/driver_config.h"

namespace vastra {

// Puts settings into config. Gives what is wrong with the first that cannot be, or nothing.
CString TakeSettings(const std::vector<CString>& settings, DriverConfig& config);

// Takes the numbers of a comma list; false for anything else.
bool TakeNumbers(const CString& list, std::vector<float>& numbers);

}  // namespace vastra
