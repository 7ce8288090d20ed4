#include "host/cli/status_views.h"

namespace vastra {
namespace {

template <class T>
CJson JsonOrNull(const std::optional<T>& value) {
  return value ? vastra::ToJson(*value) : CJson();  // other files of the batch have a ToJson, too
}

CJson LedgerJson(const CLedgerFacts& entry, const std::string& name) {
  const CLogLedger& ledger = entry.ledger;
  CJson losses = CJson::object();
  for (const auto& [cause, rows] : LossesOf(ledger))
    if (rows) losses[cause] = rows;
  return {{"log", name},
          {"kind", entry.isSummary ? "summary" : "output"},
          {"offered", ledger.offered},
          {"unwanted", ledger.unwanted},
          {"taken", ledger.taken},
          {"recovered", ledger.recovered},
          {"onDisk", ledger.onDisk},
          {"rotated", ledger.rotated},
          {"inJournal", ledger.inJournal},
          {"inMemory", ledger.inMemory},
          {"lost", ledger.lost},
          {"losses", losses}};
}

void AddCounts(const CCountsLine& counts, CJson& json) {
  const auto& failed = counts.failedWrites;
  json["scans"] = counts.scans;
  json["read"] = counts.read;
  json["failedReads"] = counts.failedReads;
  json["late"] = counts.late;
  json["failedWrites"] = {{"smart", failed.smart},
                          {"outputs", failed.outputs},
                          {"summaries", failed.summaries},
                          {"plcWrite", failed.plcWrite},
                          {"trend", failed.trend}};
  json["logsClosed"] = counts.logs.closed;
  json["logsFailed"] = counts.logs.failed;
  json["rows"] = CJson::array();
  const std::vector<std::string> names = LedgerNames(counts.ledger);
  for (std::size_t i = 0; i < names.size(); ++i)
    json["rows"].push_back(LedgerJson(counts.ledger[i], names[i]));
}

CJson NodeJson(const CNodeFacts& node) {
  return {{"name", node.name}, {"up", node.up}, {"since", ToJson(node.since)}, {"reason", node.reason}};
}

CJson MessageJson(const CMessageLine& message) {
  return {{"time", ToJson(message.time)},
          {"severity", SeverityWord(message.severity)},
          {"text", MessageText(message.Message())}};
}

void AddState(const CStateLine& state, CJson& json) {
  json["state"] = state.state;
  json["since"] = ToJson(state.since);
  json["reason"] = state.reason;
  json["lastSample"] = JsonOrNull(state.lastSample);
  json["lastSampleAge"] = JsonOrNull(state.lastSampleAge);
  json["lastError"] = state.lastError ? MessageJson(*state.lastError) : CJson();
  for (const char* const list : {"nodes", "writes", "folders", "unsaved"}) json[list] = CJson::array();
  for (const CNodeFacts& node : state.nodes) json["nodes"].push_back(NodeJson(node));
  for (const CNodeFacts& node : state.writes) json["writes"].push_back(NodeJson(node));
  for (const CFolderFacts& folder : state.folders)
    json["folders"].push_back({{"path", folder.path}, {"free", folder.free ? CJson(*folder.free) : CJson()}});
  for (const CUnsavedFacts& log : state.unsaved)
    json["unsaved"].push_back(
        {{"log", log.log}, {"path", log.path}, {"reason", log.reason}, {"rows", log.rows}});
}

void AddHello(const CHelloLine& hello, CJson& json) {
  json["vastra"] = hello.vastra;
  json["configuration"] = hello.configuration;
  json["pid"] = hello.pid;
  json["started"] = ToJson(hello.started);
  json["period"] = hello.period;
}

CJson LoggerJson(const CLoggerStatus& logger) {
  CJson json = {{"name", logger.place.name.Std()},
                {"feed", logger.place.feed.Std()},
                {"up", logger.IsUp()},
                {"well", logger.IsWell()},
                {"problems", logger.problems}};
  if (!logger.IsUp()) return json;
  AddHello(logger.hello, json);
  AddState(logger.state, json);
  if (logger.counts) AddCounts(*logger.counts, json);
  return json;
}

}  // namespace

CJson StatusJson(const std::vector<CLoggerStatus>& loggers) {
  CJson list = CJson::array();
  for (const CLoggerStatus& logger : loggers) list.push_back(LoggerJson(logger));
  return list;
}

}  // namespace vastra
