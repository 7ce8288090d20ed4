#include "host/web/logger_json.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "host/common/shown_text.h"
#include "host/web/json_append.h"
#include "vastra/history/moment.h"

namespace vastra {
namespace {

constexpr std::size_t kMostListed = 1000;    // of a list, such as the nodes
constexpr std::size_t kMostTextBytes = 500;  // of a text that is sent again and again

std::string Cut(const std::string& text) { return Shortened(text.c_str(), kMostTextBytes); }

CJson MomentOrNull(const std::optional<_timeb>& time) { return time ? CJson(MomentOf(*time)) : CJson(); }

template <class T, class F>
CJson ListJson(const std::vector<T>& list, F jsonOf) {
  CJson all = CJson::array();
  for (std::size_t i = 0; i < std::min(list.size(), kMostListed); ++i) all.push_back(jsonOf(list[i]));
  return all;
}

CJson NodeFactsJson(const CNodeFacts& node) {
  return {{"name", Cut(node.name)},
          {"up", node.up},
          {"since", MomentOf(node.since)},
          {"reason", Cut(node.reason)},
          {"next", MomentOrNull(node.next)}};
}

CJson FolderFactsJson(const CFolderFacts& folder) {
  return {{"path", Cut(folder.path)}, {"free", folder.free ? CJson(*folder.free) : CJson()}};
}

void AddMessage(const CMessageLine& message, CJson& json) {
  const CMessageParts parts = PartsOf(message.Message());
  json["time"] = MomentOf(message.time);
  json["severity"] = SeverityWord(message.severity);
  json["function"] = FunctionWord(message.function);
  json["link"] = message.link;
  json["name"] = message.name;
  json["text"] = message.text;
  json["place"] = parts.place;
  json["words"] = parts.text;
}

CJson LastErrorJson(const std::optional<CMessageLine>& message) {
  if (!message) return {};
  CMessageLine cut = *message;
  for (std::string* text : {&cut.link, &cut.name, &cut.text}) *text = Cut(*text);
  CJson json;
  AddMessage(cut, json);
  return json;
}

CJson StagesJson(const std::vector<CLedgerFacts>& ledger) {
  const std::vector<std::string> names = LedgerNames(ledger);
  CJson list = CJson::array();
  for (std::size_t i = 0; i < std::min(ledger.size(), kMostListed); ++i) {
    const CLogLedger& rows = ledger[i].ledger;
    list.push_back({{"name", names[i]},
                    {"kind", ledger[i].isSummary ? "summary" : "output"},
                    {"kept", rows.taken + rows.recovered},
                    {"saved", rows.onDisk},
                    {"waiting", rows.inJournal + rows.inMemory},
                    {"lost", rows.lost}});
  }
  return list;
}

void AddStateFacts(const CLoggerStatus& status, CJson& json) {
  const CStateLine& state = status.state;
  json["state"] = Cut(state.state);
  json["since"] = MomentOf(state.since);
  json["reason"] = Cut(state.reason);
  json["period"] = ToJson(status.hello.period);
  json["started"] = MomentOf(status.hello.started);
  json["lastSample"] = MomentOrNull(state.lastSample);
  // Tenths of seconds: more would change with each answer.
  json["lastSampleAge"] = state.lastSampleAge ? CJson(std::round(*state.lastSampleAge * 10) / 10) : CJson();
}

void AddCountFacts(const std::optional<CCountsLine>& counts, CJson& json) {
  for (const char* const key : {"read", "failedReads", "late", "lost"}) json[key] = nullptr;
  if (!counts) return;
  std::uint64_t lost = 0;
  for (const CLedgerFacts& entry : counts->ledger) lost += entry.ledger.lost;
  json["read"] = counts->read;
  json["failedReads"] = counts->failedReads;
  json["late"] = counts->late;
  json["lost"] = lost;
}

// The node of each variable that has one.
std::map<std::string_view, std::string_view> NodesOf(const CSampleVariables& list) {
  std::map<std::string_view, std::string_view> nodes;
  for (std::size_t i = 0; i < std::min(list.nodes.size(), list.origins.size()); ++i) {
    for (const std::string& variable : list.origins[i].variables) nodes.emplace(variable, list.nodes[i]);
    if (!list.origins[i].alive.empty()) nodes.emplace(list.origins[i].alive, list.nodes[i]);
  }
  return nodes;
}

}  // namespace

CJson LoggerJson(const CLoggerStatus& status) {
  CJson json = {{"name", status.place.name.Std()}, {"kind", "logger"}, {"up", status.IsUp()}};
  if (!status.IsUp()) json["fault"] = Cut(status.fault);
  json["well"] = status.IsWell();
  json["problems"] = status.problems;
  if (!status.IsUp()) return json;
  AddStateFacts(status, json);
  AddCountFacts(status.counts, json);
  json["nodes"] = ListJson(status.state.nodes, NodeFactsJson);
  json["writes"] = ListJson(status.state.writes, NodeFactsJson);
  json["folders"] = ListJson(status.state.folders, FolderFactsJson);
  json["stages"] = status.counts ? StagesJson(status.counts->ledger) : CJson::array();
  json["lastError"] = LastErrorJson(status.state.lastError);
  return json;
}

CJson FolderJson(const std::string& name) {
  return {{"name", name}, {"kind", "folder"}, {"up", true}, {"well", true}, {"problems", CJson::array()}};
}

std::string VariablesText(const std::string& logger, const CSampleVariables& list) {
  const std::map<std::string_view, std::string_view> nodes = NodesOf(list);
  std::map<std::string_view, std::string_view> units;
  for (const CUnitFacts& facts : list.units) units.emplace(facts.variable, facts.unit);
  const auto find = [](const auto& map, const std::string& name) {
    const auto found = map.find(name);
    return found == map.end() ? std::string() : std::string(found->second);
  };
  CJson variables = CJson::array();
  for (const std::string& name : list.names)
    variables.push_back({{"name", name}, {"unit", find(units, name)}, {"node", find(nodes, name)}});
  return JsonText({{"logger", logger}, {"variables", std::move(variables)}});
}

std::string SampleText(const std::string& logger, const CSampleLine& sample) {
  std::string text =
      JsonText({{"logger", logger}, {"number", sample.number}, {"time", MomentOf(sample.time)}});
  text.back() = ',';
  text += "\"values\":[";
  for (const float value : sample.values) {
    AppendComma(text);
    AppendValue(text, value);
  }
  return text + "]}";
}

std::string MessageText(const std::string& logger, std::uint64_t number, const CMessageLine& message) {
  CJson json = {{"logger", logger}, {"number", number}};
  AddMessage(message, json);
  return JsonText(json);
}

std::string LogText(const std::string& logger, const CLogLine& log) {
  return JsonText({{"logger", logger},
                   {"event", log.isClosed ? "closed" : "failed"},
                   {"name", Cut(log.name)},
                   {"file", Cut(log.path.substr(log.path.rfind('/') + 1))},
                   {"rows", log.rows},
                   {"reason", Cut(log.reason)}});
}

}  // namespace vastra
