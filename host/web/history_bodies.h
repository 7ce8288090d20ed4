// The bodies that send logs and their rows: files of any size, in pieces of about 32 KiB.
#pragma once

#include "host/web/history_catalogues.h"

namespace vastra {

// The file of a log, up to the size that it has now. Null, with the reason in fault, if it cannot be opened.
// One that is a link by now is not followed. A file that is cut meanwhile ends the body.
std::unique_ptr<CWebBody> FileBody(const CHistoryLog& log, std::string& fault);

// The text copy of a log, as its logger writes it; the lines are in the order of their times.
std::unique_ptr<CWebBody> LogCsvBody(const CHistoryLog& log);

// The rows of a range as the table of vastra convert. variables: empty for all.
std::unique_ptr<CWebBody> RowsCsvBody(CSharedLogs logs, const CMomentRange& range,
                                      std::vector<CString> variables);

}  // namespace vastra
