// The outputs and summaries of a configuration that write files. The checks go through them.
#pragma once

#include <span>
#include <vector>

#include "host/common/configuration.h"
#include "vastra/logfiles/log_naming.h"

namespace vastra {

// An output or a summary that writes files.
struct CLogTarget {
  CString key;  // such as "outputs[1]"
  CString directory;
  UINT maxLogs;
  const char* maxLogsName;  // name of the field
  UINT maxSamples;
  const CStringArray& enableEquations;  // of the configuration
  std::span<const char* const> flags;   // flags that must be assigned, or nothing is written
  CLogNaming naming;
};

std::vector<CLogTarget> FindLogTargets(const CConfiguration& configuration);

}  // namespace vastra
