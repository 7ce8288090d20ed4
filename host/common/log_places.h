// Where a configuration writes its logs, outputs and summaries alike.
#pragma once

#include <span>
#include <vector>

#include "host/common/configuration.h"

namespace vastra {

// An output or a summary that writes files.
struct CLogPlace {
  CString key;  // such as "outputs[1]"
  CString directory;
  UINT maxLogs;
  const char* maxLogsName;  // the field's
  UINT maxSamples;
  const CStringArray& enableEquations;  // the configuration's
  std::span<const char* const> flags;   // what these must assign for anything to be written
};

std::vector<CLogPlace> FindLogPlaces(const CConfiguration& configuration);

}  // namespace vastra
