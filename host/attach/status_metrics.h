// The figures of loggers for a system that collects them.
#pragma once

#include "host/attach/logger_status.h"

namespace vastra {

// The text format 0.0.4 of Prometheus, each family of metrics once.
std::string StatusMetrics(const std::vector<CLoggerStatus>& loggers);

}  // namespace vastra
