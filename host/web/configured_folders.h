// Where a logger that has not answered has its logs: its configuration says it, if it is one of /etc/vastra.
#pragma once

#include <string>
#include <vector>

#include "host/attach/find_loggers.h"

namespace vastra {

// The absolute folders of the outputs and summaries, each once; empty without a configuration that can be
// read. Relative folders are below the folder of the service's state, as the unit vastra@NAME has it.
std::vector<std::string> ConfiguredFolders(const CLoggerFolders& places, const CString& name);

}  // namespace vastra
