// The answers of CHistoryService, made from the list of a source's logs. Each throws CWebRefusal if there is
// none.
#pragma once

#include "host/web/history_catalogues.h"
#include "host/web/web_parameters.h"

namespace vastra {

struct CHistoryRequest {
  const CWebQuery& query;
  const CWebStop& isStopped;
  CHistorySource source;
  CSharedLogs logs;
};

// "vars". A browser got names with U+FFFD for bytes that are not UTF-8: such a name means the first variable
// of the logs that looks like it.
std::vector<CString> AskedVariables(const CHistoryRequest& request);

// Of rows and times (row_answers.cpp).
CWebAnswer RangeAnswer(const CHistoryRequest& request);
CWebAnswer VariablesAnswer(const CHistoryRequest& request);
CWebAnswer RowsAnswer(const CHistoryRequest& request);
CWebAnswer BucketsAnswer(const CHistoryRequest& request);
CWebAnswer GapsAnswer(const CHistoryRequest& request);

// Of logs and files (log_answers.cpp).
CWebAnswer LogsAnswer(const CHistoryRequest& request);
CWebAnswer LogAnswer(const CHistoryRequest& request);
CWebAnswer LogCsvAnswer(const CHistoryRequest& request);
CWebAnswer RowsCsvAnswer(const CHistoryRequest& request);

}  // namespace vastra
