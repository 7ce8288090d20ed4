// Where a configuration writes its logs, outputs and summaries alike, and what there may be against it.
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

// What a user may not have wanted, one line each, such as "outputs[1].maxLogs: ...".
std::vector<CString> FindWarnings(const CConfiguration& configuration);

}  // namespace vastra
