// CRowTable: where exported rows go: CSV, lines of JSON, or a table of SQLite. ExportRows fills it.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "vastra/history/moment.h"
#include "vastra/platform/string.h"

namespace vastra {

class CRowTable {
 public:
  CRowTable() = default;
  CRowTable(const CRowTable&) = delete;
  CRowTable& operator=(const CRowTable&) = delete;
  virtual ~CRowTable() = default;

  // The first call. names: of the columns after the time; they are distinct.
  virtual void Begin(const std::vector<CString>& names) = 0;
  // A row with a cell for each name; an empty cell is no value. The means of steps are doubles.
  virtual void Add(CMoment moment, std::span<const std::optional<float>> cells) = 0;
  virtual void Add(CMoment moment, std::span<const std::optional<double>> cells) = 0;
  // The last call, if no exception ended the export before.
  virtual void End() = 0;
};

}  // namespace vastra
