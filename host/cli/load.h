// Reads the configuration that is the argument of a command.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/exit.h"
#include "host/common/configuration.h"

namespace vastra {

// The help of that argument.
constexpr const char* kConfigurationHelp = "The configuration, as JSON or as a configuration file";

// Returns kDone, or kRefused after an error message; then configuration does not change. root: see
// LoadConfiguration.
EExit Load(const CFileArgument& file, CConfiguration& configuration, const CString& root = {});

}  // namespace vastra
