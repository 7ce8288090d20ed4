// Exact figures of a chart: statistics of a range, values at a moment, and rows as CSV.
#pragma once

#include <functional>

#include "vastra/charts/chart_data.h"
#include "vastra/charts/chart_rows.h"

namespace vastra {

// isStopped ends the work: then the result is not complete. faults gets the logs whose rows are missing.
std::vector<CCurveStatistics> StatisticsOf(const CChartRows& rows, const CMomentRange& range,
                                           const std::vector<CString>& variables,
                                           const std::function<bool()>& isStopped,
                                           std::vector<CHistoryFault>& faults);
std::vector<float> ValuesAt(const CChartRows& rows, CMoment moment, const std::vector<CString>& variables,
                            const std::function<bool()>& isStopped, std::vector<CHistoryFault>& faults);

// A log is listed once, however often it is read.
void AddFaults(const std::vector<CHistoryFault>& from, std::vector<CHistoryFault>& to);

// Does what CChartData::Export describes. watch gets the part that is written; false from it ends the export.
// Returns an error message, empty if the file was written.
CString ExportRows(const CChartRows& rows, const CChartData::CExport& order,
                   const std::function<bool(double)>& watch);

}  // namespace vastra
