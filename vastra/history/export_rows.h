// ExportRows: fills a table with the rows of a time range, or with one row for each step of it.
#pragma once

#include <functional>

#include "vastra/history/buckets.h"
#include "vastra/history/row_table.h"

namespace vastra {

// Which value of a variable a step has.
enum class EStepValue { mean, least, greatest, first, last };

struct CExportRequest {
  CMomentRange range;
  std::vector<CString> variables;  // empty: all
  bool isUnique = false;
  std::int64_t step = 0;   // milliseconds; 0: the rows as they are
  CMoment stepOrigin = 0;  // a moment at which a step begins
  EStepValue value = EStepValue::mean;
};

// Called now and then with the part that is done, from 0 to 1. It can end the export by an exception.
using CExportWatch = std::function<void(double)>;
// Makes the names of columns of those of the variables.
using CColumnNamer = std::function<std::vector<CString>(const std::vector<CString>&)>;

struct CExportResult {
  std::uint64_t rows = 0;
  std::vector<CHistoryFault> faults;  // logs that could not be read any more
};

VASTRA_API CExportResult ExportRows(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
                                    const CColumnNamer& namer, CRowTable& table, const CExportWatch& watch);

}  // namespace vastra
