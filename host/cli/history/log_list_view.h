// The lists of vastra inspect: the logs of folders, and the gaps between all logs.
#pragma once

#include <string>
#include <vector>

#include "host/common/json_text.h"
#include "vastra/history/catalogue.h"

namespace vastra {

// The line of a log in a folder: path, samples, variables and times, or its fault. shown: the path for
// people.
std::string LogLine(const CHistoryLog& log, const CString& shown);
// The same as an object: as inspect prints it for a file, and the size.
CJson LogJson(const CHistoryLog& log, const CString& shown);

// A line for each gap, or one that says that there are none.
std::vector<std::string> GapLines(const std::vector<CGap>& gaps, std::int64_t longerThan);
// An array of [from, to], in RFC 3339.
CJson GapsJson(const std::vector<CGap>& gaps);

}  // namespace vastra
