#include "vastra/history/export_rows.h"

#include <algorithm>

#include "vastra/history/catalogue.h"

namespace vastra {
namespace {

constexpr std::uint64_t kRowsBetweenLooks = 64;

// The columns of a table without rows are those of all logs.
const std::vector<CString> ColumnsOf(const std::vector<CString>& found,
                                     const std::vector<CHistoryLog>& logs) {
  return found.empty() ? NamesOf(logs) : found;
}

void ExportAll(const std::vector<CHistoryLog>& logs, const CExportRequest& request, const CColumnNamer& namer,
               CRowTable& table, const CExportWatch& watch, CExportResult& result) {
  CRowExport rows(logs, request, namer, table);
  while (rows.Next())
    if (++result.rows % kRowsBetweenLooks == 0) watch(rows.Reader().Progress());
  result.faults = rows.Reader().Faults();
}

// A part of the range that is cut in steps: the first and the last step may be cut by the ends of the range.
struct CStepRange {
  CMomentRange range;
  std::uint64_t steps;
  CMoment begin;  // of the first step
};

std::vector<CStepRange> StepRanges(const CMomentRange& range, CMoment origin, std::int64_t step) {
  const auto stepBefore = [=](CMoment moment) {
    const std::int64_t rest = (moment - origin) % step;
    return moment - rest - (rest < 0 ? step : 0);
  };
  std::vector<CStepRange> ranges;
  CMoment from = range.from;
  const CMoment first = stepBefore(from), last = stepBefore(range.to);
  const auto add = [&](CMoment to, std::uint64_t steps, CMoment begin) {
    if (from < to) ranges.push_back({{from, to}, steps, begin});
    from = std::max(from, to);
  };
  if (first < from) add(std::min(first + step, range.to), 1, first);
  if (from < last) add(last, static_cast<std::uint64_t>((last - from) / step), from);
  add(range.to, 1, last);
  return ranges;
}

template <class TNumber>
using CStepCell = TNumber (*)(const CBucket&);

template <class TNumber>
class CStepExport {
 public:
  CStepExport(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
              const std::vector<CString>& variables, CStepCell<TNumber> cell, CRowTable& table,
              const CExportWatch& watch)
      : m_logs(logs),
        m_request(request),
        m_variables(variables),
        m_cell(cell),
        m_table(table),
        m_watch(watch),
        m_cells(variables.size()) {}

  void Run(const CMomentRange& range, CExportResult& result) {
    if (m_variables.empty()) return;
    for (const CStepRange& part : StepRanges(range, m_request.stepOrigin, m_request.step))
      Run(part, range, result);
  }

 private:
  void Run(const CStepRange& part, const CMomentRange& range, CExportResult& result) {
    CBucketReader reader(
        m_logs,
        {.range = part.range, .parts = part.steps, .variables = m_variables, .isUnique = m_request.isUnique});
    CBucketPart step;
    while (reader.Next(step)) {
      for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const CBucket& bucket = step.buckets[i];
        m_cells[i] = bucket.values ? std::optional(m_cell(bucket)) : std::nullopt;
      }
      m_table.Add(part.begin + static_cast<std::int64_t>(step.index) * m_request.step, m_cells);
      ++result.rows;
      m_watch(static_cast<double>(step.to - range.from) / static_cast<double>(range.to - range.from));
    }
    AddFaults(reader.Faults(), result.faults);
  }

  static void AddFaults(const std::vector<CHistoryFault>& found, std::vector<CHistoryFault>& faults) {
    for (const CHistoryFault& fault : found)
      if (std::none_of(faults.begin(), faults.end(),
                       [&](const CHistoryFault& known) { return known.path == fault.path; }))
        faults.push_back(fault);
  }

  const std::vector<CHistoryLog>& m_logs;
  const CExportRequest& m_request;
  const std::vector<CString>& m_variables;
  const CStepCell<TNumber> m_cell;
  CRowTable& m_table;
  const CExportWatch& m_watch;
  std::vector<std::optional<TNumber>> m_cells;
};

// Where there are rows; without any, an empty range.
CMomentRange CommonRange(const CMomentRange& asked, const CMomentRange& rows) {
  const CMoment from = std::max(asked.from, rows.from);
  return {from, std::max(from, std::min(asked.to, rows.to))};
}

void ExportSteps(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
                 const CColumnNamer& namer, CRowTable& table, const CExportWatch& watch,
                 CExportResult& result) {
  constexpr struct {
    EStepValue value;
    CStepCell<float> cell;
  } kCells[] = {{EStepValue::least, [](const CBucket& bucket) { return bucket.least; }},
                {EStepValue::greatest, [](const CBucket& bucket) { return bucket.greatest; }},
                {EStepValue::first, [](const CBucket& bucket) { return bucket.first; }},
                {EStepValue::last, [](const CBucket& bucket) { return bucket.last; }}};
  const CMomentRange range = CommonRange(request.range, RangeOf(logs));
  const std::vector<CString> variables = request.variables.empty() ? NamesOf(logs, range) : request.variables;
  table.Begin(namer(ColumnsOf(variables, logs)));
  for (const auto& known : kCells)
    if (known.value == request.value)
      return CStepExport<float>(logs, request, variables, known.cell, table, watch).Run(range, result);
  const CStepCell<double> mean = [](const CBucket& bucket) { return bucket.Mean(); };
  CStepExport<double>(logs, request, variables, mean, table, watch).Run(range, result);
}

}  // namespace

CRowExport::CRowExport(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
                       const CColumnNamer& namer, CRowTable& table)
    : m_reader(logs, {request.range, request.variables, request.isUnique}),
      m_table(table),
      m_cells(m_reader.Variables().size()) {
  m_table.Begin(namer(ColumnsOf(m_reader.Variables(), logs)));
}

bool CRowExport::Next() {
  CHistoryRow row;
  if (!m_reader.Next(row)) return false;
  for (std::size_t i = 0; i < m_cells.size(); ++i) {
    float value;
    m_cells[i] = row.Get(i, value) ? std::optional(value) : std::nullopt;
  }
  m_table.Add(row.moment, m_cells);
  return true;
}

CExportResult ExportRows(const std::vector<CHistoryLog>& logs, const CExportRequest& request,
                         const CColumnNamer& namer, CRowTable& table, const CExportWatch& watch) {
  CExportResult result;
  (request.step ? ExportSteps : ExportAll)(logs, request, namer, table, watch, result);
  table.End();
  return result;
}

}  // namespace vastra
