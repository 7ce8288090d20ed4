#include "host/attach/status_metrics.h"

#include <charconv>
#include <cmath>
#include <set>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

using CLabels = std::vector<std::pair<const char*, std::string>>;

std::string NumberText(std::uint64_t number) { return std::to_string(number); }
std::string NumberText(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number > 0 ? "+Inf" : "-Inf";
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

// A label's value is in quotes; a backslash is before what would end it.
std::string Quoted(const std::string& value) {
  std::string text = "\"";
  for (const char c : Printable(Shortened(value.c_str(), 500))) {
    if (c == '\\' || c == '"') text += '\\';
    text += c;
  }
  return text + '"';
}

// The lines of one family.
class CSeries {
 public:
  CSeries(const char* name, std::string& text) : m_name(name), m_text(text) {}

  void Of(const CLoggerStatus& logger) { m_logger = Quoted(logger.place.name.Std()); }
  // Two things of a logger with the same labels would make the text invalid; the first one counts.
  template <class T>
  void Put(T value, const CLabels& labels = {}) {
    std::string key = std::string(m_name) + "{logger=" + m_logger;
    for (const auto& [name, label] : labels) key.append(",").append(name).append("=") += Quoted(label);
    if (m_keys.insert(key).second) m_text += key + "} " + NumberText(value) + "\n";
  }

 private:
  const char* m_name;
  std::string& m_text;
  std::string m_logger;
  std::set<std::string> m_keys;
};

using CUp = const CLoggerStatus&;  // a logger that answers
using CNow = const CCountsLine&;   // its counts
using CAny = const CLoggerStatus&;

std::uint64_t Truth(bool is) { return is; }
double SecondsOf(const _timeb& time) { return time.time + time.millitm / 1000.0; }

void PutStates(CSeries& series, CUp logger) {
  for (const char* const state : kFeedStates)
    series.Put(Truth(logger.state.state == state), {{"state", state}});
}

// Of nodes with the same name each must be there.
template <std::vector<CNodeFacts> CStateLine::*NODES>
void PutNodes(CSeries& series, CUp logger) {
  for (const bool isUp : {false, true})
    for (const CNodeFacts& node : logger.state.*NODES)
      if (node.up == isUp) series.Put(Truth(isUp), {{"node", node.name}});
}

void PutFolders(CSeries& series, CUp logger) {
  for (const CFolderFacts& folder : logger.state.folders)
    if (folder.free) series.Put(*folder.free, {{"folder", folder.path}});
}

void PutInfo(CSeries& series, CUp logger) {
  series.Put(Truth(true), {{"version", logger.hello.vastra}, {"configuration", logger.hello.configuration}});
}

void PutFailedWrites(CSeries& series, CNow counts) {
  const auto& failed = counts.failedWrites;
  const std::pair<const char*, std::uint64_t> stages[] = {{"smart", failed.smart},
                                                          {"outputs", failed.outputs},
                                                          {"summaries", failed.summaries},
                                                          {"plcWrite", failed.plcWrite},
                                                          {"trend", failed.trend}};
  for (const auto& [stage, count] : stages) series.Put(count, {{"stage", stage}});
}

template <std::uint64_t CLogLedger::*ROWS>
void PutRows(CSeries& series, CNow counts) {
  const std::vector<std::string> names = LedgerNames(counts.ledger);
  for (std::size_t i = 0; i < names.size(); ++i)
    series.Put(counts.ledger[i].ledger.*ROWS, {{"log", names[i]}});
}

// The series without a reason is always there, so that an alert sees the first loss as an increase.
void PutLosses(CSeries& series, CNow counts) {
  const std::vector<std::string> names = LedgerNames(counts.ledger);
  for (std::size_t i = 0; i < names.size(); ++i)
    for (const auto& [reason, rows] : LossesOf(counts.ledger[i].ledger))
      series.Put(rows, {{"log", names[i]}, {"reason", reason}});
}

constexpr const char *kGauge = "gauge", *kCounter = "counter";

// The families. Each has one of: all loggers, those that answer, those that have counts.
struct CFamily {
  const char *name, *type, *help;
  void (*ofAll)(CSeries&, CAny);
  void (*ofUp)(CSeries&, CUp) = nullptr;
  void (*ofCounts)(CSeries&, CNow) = nullptr;
};
constexpr CFamily kFamilies[] = {
    {"vastra_up", kGauge, "Whether the logger answers.", [](CSeries& s, CAny l) { s.Put(Truth(l.IsUp())); }},
    {"vastra_well", kGauge, "Whether vastra status finds nothing wrong.",
     [](CSeries& s, CAny l) { s.Put(Truth(l.IsWell())); }},
    {"vastra_info", kGauge, "Version and configuration of the logger.", nullptr, PutInfo},
    {"vastra_state", kGauge, "1 for the present state of the logger.", nullptr, PutStates},
    {"vastra_start_time_seconds", kGauge, "When the process of the logger started.", nullptr,
     [](CSeries& s, CUp l) { s.Put(SecondsOf(l.hello.started)); }},
    {"vastra_scan_period_seconds", kGauge, "The period of the scans; 0: as fast as possible.", nullptr,
     [](CSeries& s, CUp l) { s.Put(l.hello.period / 1000); }},
    {"vastra_last_sample_timestamp_seconds", kGauge, "The time of the last sample.", nullptr,
     [](CSeries& s, CUp l) {
       if (l.state.lastSample) s.Put(SecondsOf(*l.state.lastSample));
     }},
    {"vastra_last_sample_age_seconds", kGauge, "The age of the last sample.", nullptr,
     [](CSeries& s, CUp l) {
       if (l.state.lastSampleAge) s.Put(*l.state.lastSampleAge);
     }},
    {"vastra_node_up", kGauge, "Whether the node is there to be read.", nullptr,
     PutNodes<&CStateLine::nodes>},
    {"vastra_write_node_up", kGauge, "Whether the node is there to be written.", nullptr,
     PutNodes<&CStateLine::writes>},
    {"vastra_disk_free_bytes", kGauge, "Free space for the logs of a folder.", nullptr, PutFolders},
    {"vastra_logs_unsaved", kGauge, "Logs that could not be saved and wait for the disk.", nullptr,
     [](CSeries& s, CUp l) { s.Put(std::uint64_t{l.state.unsaved.size()}); }},
    {"vastra_scans_total", kCounter, "Scans.", nullptr, nullptr, [](CSeries& s, CNow c) { s.Put(c.scans); }},
    {"vastra_scans_failed_total", kCounter, "Scans without a sample.", nullptr, nullptr,
     [](CSeries& s, CNow c) { s.Put(c.failedReads); }},
    {"vastra_scans_late_total", kCounter, "Scans that were skipped because one was under way.", nullptr,
     nullptr, [](CSeries& s, CNow c) { s.Put(c.late); }},
    {"vastra_writes_failed_total", kCounter, "Samples that a stage refused.", nullptr, nullptr,
     PutFailedWrites},
    {"vastra_log_saves_failed_total", kCounter, "Attempts to save a log that failed.", nullptr, nullptr,
     [](CSeries& s, CNow c) { s.Put(c.logs.failed); }},
    {"vastra_logs_closed_total", kCounter, "Logs that were saved.", nullptr, nullptr,
     [](CSeries& s, CNow c) { s.Put(c.logs.closed); }},
    {"vastra_rows_offered_total", kCounter, "Rows that were offered to a log.", nullptr, nullptr,
     PutRows<&CLogLedger::offered>},
    {"vastra_rows_unwanted_total", kCounter, "Rows that the log's equations kept out of it.", nullptr,
     nullptr, PutRows<&CLogLedger::unwanted>},
    {"vastra_rows_recovered_total", kCounter, "Rows of an earlier run, from its journal.", nullptr, nullptr,
     PutRows<&CLogLedger::recovered>},
    {"vastra_rows_on_disk_total", kCounter, "Rows in logs that were saved.", nullptr, nullptr,
     PutRows<&CLogLedger::onDisk>},
    {"vastra_rows_rotated_total", kCounter, "Rows in saved logs that were removed since.", nullptr, nullptr,
     PutRows<&CLogLedger::rotated>},
    {"vastra_rows_in_journal", kGauge, "Rows that are in a journal and not in a saved log.", nullptr, nullptr,
     PutRows<&CLogLedger::inJournal>},
    {"vastra_rows_in_memory", kGauge, "Rows that are in memory only.", nullptr, nullptr,
     PutRows<&CLogLedger::inMemory>},
    {"vastra_rows_lost_total", kCounter, "Rows that were lost, by reason.", nullptr, nullptr, PutLosses},
};

std::string FamilyText(const CFamily& family, const std::vector<CLoggerStatus>& loggers) {
  std::string lines;
  CSeries series(family.name, lines);
  for (const CLoggerStatus& logger : loggers) {
    series.Of(logger);
    if (family.ofAll) family.ofAll(series, logger);
    if (family.ofUp && logger.IsUp()) family.ofUp(series, logger);
    if (family.ofCounts && logger.IsUp() && logger.counts) family.ofCounts(series, *logger.counts);
  }
  if (lines.empty()) return {};
  const std::string name = family.name;
  return "# HELP " + name + " " + family.help + "\n# TYPE " + name + " " + family.type + "\n" + lines;
}

}  // namespace

std::string StatusMetrics(const std::vector<CLoggerStatus>& loggers) {
  std::string text;
  for (const CFamily& family : kFamilies) text += FamilyText(family, loggers);
  return text;
}

}  // namespace vastra
