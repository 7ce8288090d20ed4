// Where a configuration writes its logs, outputs and summaries alike.
#pragma once

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
};

std::vector<CLogPlace> FindLogPlaces(const CConfiguration& configuration);

}  // namespace vastra
