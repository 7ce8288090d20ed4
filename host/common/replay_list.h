// The logs of a replay, looked at before its stages open. A replay whose logs are kept by a policy goes on
// without the bad ones.
#pragma once

#include <vector>

#include "host/common/configuration.h"

namespace vastra {

struct CReplayList {
  CStringList files;            // those that can be played, in the order of the list
  std::vector<CString> faults;  // a line for each other one, which begins with the path of its key
};

// Reads each log of files. A file is bad if it is not there, not a regular file (it is not opened then), not
// a whole log, or a log with other variables than the one with the earliest first sample.
CReplayList CheckReplayList(const CStringList& files);

// Removes the bad logs from the list of configuration, if it is a replay. Returns the lines of CReplayList.
std::vector<CString> LeaveOutBadLogs(CConfiguration& configuration);

}  // namespace vastra
