// What status prints about loggers: a table for people, JSON for programs. The metrics are in host/attach.
#pragma once

#include "host/attach/logger_status.h"
#include "host/cli/json_output.h"

namespace vastra {

// A row for each logger, below them a line for each thing that is not well and for each last error.
std::vector<std::string> StatusTable(const std::vector<CLoggerStatus>& loggers);

// An array with an object for each logger; docs/service.md describes it.
CJson StatusJson(const std::vector<CLoggerStatus>& loggers);

}  // namespace vastra
