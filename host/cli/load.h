// How commands read the configuration that they are given.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/exit.h"
#include "host/common/configuration.h"

namespace vastra {

// kDone, or kRefused after telling why; configuration is then as it was.
EExit Load(const CFileArgument& file, CConfiguration& configuration);

}  // namespace vastra
