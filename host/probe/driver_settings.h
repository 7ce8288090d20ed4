// Settings of a driver as they are typed on a command line: FIELD=VALUE. The fields have the names of a
// configuration.
#pragma once

#include <vector>

#include "vastra/plc/driver_config.h"

namespace vastra {

// Puts settings into config. Returns an empty text, or what is wrong with the first bad setting.
CString ReadSettings(const std::vector<CString>& settings, DriverConfig& config);

// Appends the numbers of a comma list to numbers. False if list is not one.
bool ReadNumbers(const CString& list, std::vector<float>& numbers);

}  // namespace vastra
