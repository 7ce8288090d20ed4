#include <algorithm>
#include <cstdio>
#include <ctime>

#include "host/cli/status_views.h"
#include "host/cli/terminal/figures.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

std::string ClockText(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

std::string AgeText(double seconds) {
  char text[64];
  if (seconds < 120) {
    std::snprintf(text, sizeof text, seconds < 10 ? "%.1f s" : "%.0f s", seconds);
    return text;
  }
  constexpr double kLongest = 1e9;  // seconds
  return InHours(std::chrono::seconds(static_cast<std::int64_t>(std::min(seconds, kLongest)))).Std();
}

std::string BytesText(std::uint64_t bytes) {
  constexpr const char* kUnits[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
  auto number = static_cast<double>(bytes);
  std::size_t unit = 0;
  for (; number >= 999.5 && unit + 1 < std::size(kUnits); ++unit) number /= 1000;
  char text[64];
  std::snprintf(text, sizeof text, number < 10 && unit ? "%.1f %s" : "%.0f %s", number, kUnits[unit]);
  return text;
}

std::string FreeText(const std::vector<CFolderFacts>& folders) {
  std::optional<std::uint64_t> least;
  for (const CFolderFacts& folder : folders)
    if (folder.free) least = std::min(least.value_or(*folder.free), *folder.free);
  return least ? BytesText(*least) : "";
}

// The sum of one place of the rows of all logs.
std::string RowsText(const CCountsLine& counts, std::uint64_t CLogLedger::*rows) {
  std::uint64_t sum = 0;
  for (const CLedgerFacts& entry : counts.ledger) sum += entry.ledger.*rows;
  return std::to_string(sum);
}

// The columns, the widest at the end, where a narrow terminal cuts them: of a logger that answers, and of one
// that has counts.
using CStatus = const CLoggerStatus&;
using CCounts = const CCountsLine&;
struct CTableColumn {
  const char* heading;
  bool isNumber;
  std::string (*text)(CStatus);
  std::string (*count)(CCounts);
};
constexpr CTableColumn kTableColumns[] = {
    {"STATE", false, [](CStatus s) { return Printable(Shortened(s.state.state.c_str(), 20)); }, nullptr},
    {"AGE", true,
     [](CStatus s) { return s.state.lastSampleAge ? AgeText(*s.state.lastSampleAge) : std::string(); },
     nullptr},
    {"SCANS", true, nullptr, [](CCounts c) { return std::to_string(c.scans); }},
    {"FAILED", true, nullptr, [](CCounts c) { return std::to_string(c.failedReads); }},
    {"LATE", true, nullptr, [](CCounts c) { return std::to_string(c.late); }},
    {"LOST", true, nullptr, [](CCounts c) { return RowsText(c, &CLogLedger::lost); }},
    {"MEMORY", true, nullptr, [](CCounts c) { return RowsText(c, &CLogLedger::inMemory); }},
    {"JOURNAL", true, nullptr, [](CCounts c) { return RowsText(c, &CLogLedger::inJournal); }},
    {"ON DISK", true, nullptr, [](CCounts c) { return RowsText(c, &CLogLedger::onDisk); }},
    {"LOGS", true, nullptr, [](CCounts c) { return std::to_string(c.logs.closed); }},
    {"FREE", true, [](CStatus s) { return FreeText(s.state.folders); }, nullptr},
    {"LAST SAMPLE", false,
     [](CStatus s) { return s.state.lastSample ? ClockText(*s.state.lastSample) : std::string("none"); },
     nullptr},
    {"SINCE", false, [](CStatus s) { return ClockText(s.state.since); }, nullptr},
};

using CTableRow = std::vector<std::string>;

CTableRow HeadingRow() {
  CTableRow row = {"NAME"};
  for (const CTableColumn& column : kTableColumns) row.emplace_back(column.heading);
  return row;
}

CTableRow RowOf(const CLoggerStatus& logger) {
  CTableRow row = {logger.place.name.Std()};
  if (!logger.IsUp()) return row.emplace_back("down"), row;
  for (const CTableColumn& column : kTableColumns) {
    if (column.text)
      row.push_back(column.text(logger));
    else
      row.push_back(logger.counts ? column.count(*logger.counts) : "");
  }
  return row;
}

std::string Aligned(const CTableRow& row, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < row.size(); ++i) {
    const bool isNumber = i > 0 && kTableColumns[i - 1].isNumber;
    line += (i ? "  " : "") + (isNumber ? PadLeft(row[i], widths[i]) : PadRight(row[i], widths[i]));
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string LastErrorText(const CMessageLine& message) {
  return "last error, " + ClockText(message.time) + ": " +
         Shortened(MessageText(message.Message()).c_str(), 300);
}

}  // namespace

std::vector<std::string> StatusTable(const std::vector<CLoggerStatus>& loggers) {
  std::vector<CTableRow> rows = {HeadingRow()};
  for (const CLoggerStatus& logger : loggers) rows.push_back(RowOf(logger));
  std::vector<std::size_t> widths(rows.front().size());
  for (const CTableRow& row : rows)
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], WidthOf(row[i]));
  std::vector<std::string> lines;
  lines.reserve(rows.size());
  for (const CTableRow& row : rows) lines.push_back(Aligned(row, widths));
  for (const CLoggerStatus& logger : loggers) {
    const std::string name = logger.place.name.Std() + ": ";
    for (const std::string& problem : logger.problems) lines.push_back(name + problem);
    if (logger.state.lastError) lines.push_back(name + LastErrorText(*logger.state.lastError));
  }
  return lines;
}

}  // namespace vastra
