// Ids of logs: under which name a browser asks for a log that it was shown. An id is the number of the folder
// in its source and the path below it, such as "0/2026/kiln.rph", with %XX for bytes that are not plain. It
// is only compared with the ids of the logs that a catalogue has, and never made a path.
#pragma once

#include "host/web/history_catalogues.h"

namespace vastra {

// Empty if the path is not below one of the folders.
std::string LogId(const CHistorySource& source, const CString& path);

// Whether the catalogue lists a folder here, which cannot be read, and not a log.
bool IsFolderFault(const CHistoryLog& log);

// The log with this id; null if the logs have none.
const CHistoryLog* FindLog(const CHistorySource& source, const std::vector<CHistoryLog>& logs,
                           std::string_view id);

// The last part of a path.
std::string_view FilePart(const CString& path);

}  // namespace vastra
