#include "vastra/charts/chart_figures.h"

#include <bit>
#include <cmath>
#include <limits>

#include "vastra/charts/chart_row_reader.h"
#include "vastra/history/buckets.h"
#include "vastra/history/csv_table.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

constexpr std::uint64_t kPartsBetweenLooks = 256;  // of the range
constexpr std::uint64_t kRowsBetweenLooks = 256;

std::vector<CString> EachOnce(const std::vector<CString>& variables) {
  std::vector<CString> once;
  for (const CString& variable : variables)
    if (std::find(once.begin(), once.end(), variable) == once.end()) once.push_back(variable);
  return once;
}

// Calls work with each group of the variables that share a timeline, and with their names.
using CGroupWork = std::function<void(const CTimeline&, const std::vector<CString>&)>;
void ForGroups(const CChartRows& rows, const std::vector<CString>& variables, const CGroupWork& work) {
  const std::vector<CString> once = EachOnce(variables);
  for (const CVariableGroup& group : rows.GroupsOf(once)) {
    std::vector<CString> names;
    for (const std::size_t place : group.places) names.push_back(once[place]);
    work(*group.timeline, names);
  }
}

// What is read, until when, and what could not be read.
struct CReading {
  const CChartRows& rows;
  const std::function<bool()>& isStopped;
  std::vector<CHistoryFault>& faults;
};

// The rows of logs that share no time with others.
void AddSingle(const CReading& reading, const CMomentRange& range, const std::vector<CString>& names,
               std::vector<CBucket>& buckets) {
  if (range.from >= range.to) return;
  CBucketReader reader(reading.rows.Logs(),
                       {.range = range, .parts = kPartsBetweenLooks, .variables = names});
  CBucketPart part;
  while (!reading.isStopped() && reader.Next(part))
    for (std::size_t i = 0; i < names.size(); ++i) buckets[i].Add(part.buckets[i]);
  AddFaults(reader.Faults(), reading.faults);
}

// The values of a variable at a moment, of the logs that have been read.
class CSeenValues {
 public:
  // Adds a value. False: another log has it at this moment, too, as the logs of several outputs do.
  bool Add(const CHistoryRow& row, float value) {
    if (m_moment != row.moment) m_values.clear();
    m_moment = row.moment;
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const auto isKnown = [&](const CValue& known) { return known.log != row.log && known.bits == bits; };
    if (std::any_of(m_values.begin(), m_values.end(), isKnown)) return false;
    if (m_values.size() < kMost) m_values.push_back({row.log, bits});
    return true;
  }

 private:
  static constexpr std::size_t kMost = 64;  // of one moment
  struct CValue {
    const CHistoryLog* log;
    std::uint32_t bits;
  };
  CMoment m_moment = kEndMoment;
  std::vector<CValue> m_values;
};

// The rows of logs that share a time with others.
void AddShared(const CReading& reading, const CMomentRange& range, const std::vector<CString>& names,
               std::vector<CBucket>& buckets) {
  if (range.from >= range.to) return;
  CRowReader reader(reading.rows.Logs(), {.range = range, .variables = names});
  std::vector<CSeenValues> seen(names.size());
  CHistoryRow row;
  for (std::uint64_t number = 0; reader.Next(row); ++number) {
    if (number % kRowsBetweenLooks == 0 && reading.isStopped()) return;
    for (std::size_t i = 0; i < names.size(); ++i)
      if (float value; row.Get(i, value) && seen[i].Add(row, value))
        buckets[i].Add(reinterpret_cast<const char*>(&value), 0, 1);
  }
  AddFaults(reader.Faults(), reading.faults);
}

void AddLogged(const CReading& reading, const CTimeline& timeline, CMomentRange range,
               const std::vector<CString>& names, std::vector<CBucket>& buckets) {
  range.to = std::min(range.to, timeline.since);
  for (const CMomentRange& shared : timeline.shared) {
    if (shared.to <= range.from || shared.from >= range.to) continue;
    AddSingle(reading, {range.from, shared.from}, names, buckets);
    range.from = std::max(range.from, shared.from);
    AddShared(reading, {range.from, std::min(range.to, shared.to)}, names, buckets);
    range.from = shared.to;
  }
  AddSingle(reading, range, names, buckets);
}

void AddLive(const CChartRows& rows, const CMomentRange& range, const std::vector<CString>& names,
             std::vector<CBucket>& buckets) {
  const std::vector<std::int32_t> places = PlacesInRing(rows, names);
  CLiveRows live(rows, range);
  while (live.Next())
    for (std::size_t i = 0; i < names.size(); ++i)
      buckets[i].Add(reinterpret_cast<const char*>(live.Values() + places[i]), 0, 1);
}

// The name of each column: those after a column of the same name, and a variable called "time", get a number.
std::vector<CString> ColumnsOf(const std::vector<CString>& variables) {
  std::vector<CString> taken = {"time"}, columns;
  for (const CString& variable : variables) {
    CString column = variable;
    for (int i = 2; std::find(taken.begin(), taken.end(), column) != taken.end(); ++i)
      column = variable + "_" + CString(std::to_string(i));
    taken.push_back(column);
    columns.push_back(column);
  }
  return columns;
}

struct CExportEnded {};
struct CSamplesLost {};

void FillTable(CRowTable& table, const CChartRows& rows, const CMomentRange& range,
               const std::vector<CString>& variables, const std::function<bool(double)>& watch) {
  CChartRowReader reader(rows, range, variables);
  table.Begin(ColumnsOf(variables));
  for (std::uint64_t i = 0; reader.Next(); ++i) {
    if (i % kRowsBetweenLooks == 0 && !watch(reader.Progress())) throw CExportEnded();
    table.Add(reader.Moment(), std::span<const std::optional<float>>(reader.Cells()));
  }
  if (!reader.Faults().empty()) throw CHistoryFault(reader.Faults().front());
  if (!rows.IsComplete()) throw CSamplesLost();
  table.End();
}

bool HasFile(const std::vector<CHistoryLog>& logs, const CString& path) {
  CFileStatus status;
  if (!FileLayer().Stat(path, status) || status.type == EFileType::folder) return false;
  return std::any_of(logs.begin(), logs.end(), [&](const CHistoryLog& log) {
    return log.path == path ||
           (log.status.inode && log.status.device == status.device && log.status.inode == status.inode);
  });
}

}  // namespace

std::vector<CCurveStatistics> StatisticsOf(const CChartRows& rows, const CMomentRange& range,
                                           const std::vector<CString>& variables,
                                           const std::function<bool()>& isStopped,
                                           std::vector<CHistoryFault>& faults) {
  const CReading reading = {rows, isStopped, faults};
  std::map<CString, CBucket> found;
  ForGroups(rows, variables, [&](const CTimeline& timeline, const std::vector<CString>& names) {
    std::vector<CBucket> buckets(names.size());
    AddLogged(reading, timeline, range, names, buckets);
    if (timeline.isLive) AddLive(rows, {std::max(range.from, timeline.since), range.to}, names, buckets);
    for (std::size_t i = 0; i < names.size(); ++i) found[names[i]] = buckets[i];
  });
  std::vector<CCurveStatistics> statistics;
  for (const CString& variable : variables) {
    const CBucket& bucket = found[variable];
    statistics.push_back({bucket.values, bucket.least, bucket.greatest, bucket.Mean()});
  }
  return statistics;
}

std::vector<float> ValuesAt(const CChartRows& rows, CMoment moment, const std::vector<CString>& variables,
                            const std::function<bool()>& isStopped, std::vector<CHistoryFault>& faults) {
  std::map<CString, float> found;
  ForGroups(rows, variables, [&](const CTimeline& timeline, const std::vector<CString>& names) {
    const CMoment first = moment - rows.LongestStep(timeline, moment, rows.Head());
    CChartRowReader reader(rows, {first, moment + 1}, names);
    while (reader.Next() && !isStopped())
      for (std::size_t i = 0; i < names.size(); ++i)
        if (reader.Cells()[i]) found[names[i]] = *reader.Cells()[i];
    AddFaults(reader.Faults(), faults);
  });
  std::vector<float> values;
  for (const CString& variable : variables) {
    const auto value = found.find(variable);
    values.push_back(value == found.end() ? std::numeric_limits<float>::quiet_NaN() : value->second);
  }
  return values;
}

void AddFaults(const std::vector<CHistoryFault>& from, std::vector<CHistoryFault>& to) {
  for (const CHistoryFault& fault : from)
    if (std::ranges::find(to, fault.path, &CHistoryFault::path) == to.end()) to.push_back(fault);
}

CString ExportRows(const CChartRows& rows, const CChartData::CExport& order,
                   const std::function<bool(double)>& watch) {
  const CString& path = order.path;
  if (HasFile(rows.Logs(), path)) return path + ": not written: it is one of the logs";
  try {
    SaveFile(path, [&](CFile& file) {
      CCsvTable table(file, order.isUtc ? ETimeForm::utc : ETimeForm::local);
      FillTable(table, rows, order.range, EachOnce(order.variables), watch);
    });
    return {};
  } catch (const CFileException& fault) {
    return path + ": " + fault.Text();
  } catch (const CHistoryFault& fault) {
    return path + ": not written: " + fault.path + ": " + fault.fault;
  } catch (const CSamplesLost&) {
    return path + ": not written: the newest samples have changed meanwhile (export again)";
  } catch (const CExportEnded&) {
    return path + ": not written: the export was cancelled";
  }
}

}  // namespace vastra
