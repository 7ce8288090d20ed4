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

// The rows as they are, one by one, for a table that is filled while it is sent.
class VASTRA_API CRowExport {
 public:
  // Begins the table. logs and table must exist as long as the object; step of request is 0.
  CRowExport(const std::vector<CHistoryLog>& logs, const CExportRequest& request, const CColumnNamer& namer,
             CRowTable& table);

  // Adds the next row to the table: true, or false after the last one.
  bool Next();
  const CRowReader& Reader() const { return m_reader; }

 private:
  CRowReader m_reader;
  CRowTable& m_table;
  std::vector<std::optional<float>> m_cells;
};

// Begins the table, fills and ends it.
VASTRA_API CExportResult ExportRows(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
                                    const CColumnNamer& namer, CRowTable& table, const CExportWatch& watch);

}  // namespace vastra
