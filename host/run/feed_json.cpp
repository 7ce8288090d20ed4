#include "host/run/feed_json.h"

#include <unistd.h>

#include <charconv>
#include <cmath>
#include <set>

#include "host/common/message_text.h"
#include "host/run/run_json.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kFeedVersion = 1;
constexpr const char* kStates[] = {"opening", "running", "waiting", "stopping", "stopped"};

CJson TextsJson(const std::vector<CString>& texts) {
  CJson list = CJson::array();
  for (const CString& text : texts) list.push_back(ToJson(text));
  return list;
}

CJson NamesJson(const CFeedNames& names) { return names ? TextsJson(*names) : CJson::array(); }

CJson LogsJson(const std::vector<CFeedFacts::CLog>& logs) {
  CJson list = CJson::array();
  for (const CFeedFacts::CLog& log : logs)
    list.push_back({{"name", ToJson(log.name)},
                    {"folder", ToJson(log.folder)},
                    {"binary", log.savesBinary},
                    {"text", log.savesText},
                    {"maxLogs", log.maxLogs},
                    {"maxSamples", log.maxSamples}});
  return list;
}

CJson OriginsJson(const CFeedFacts& facts) {
  CJson list = CJson::array();
  for (const CFeedFacts::COrigin& origin : facts.origins)
    list.push_back({{"variables", NamesJson(origin.variables)}, {"alive", ToJson(origin.alive)}});
  return list;
}

CJson UnitsJson(const CFeedFacts& facts) {
  CJson list = CJson::array();
  for (const auto& [name, unit] : facts.units)
    list.push_back({{"variable", ToJson(name)}, {"unit", ToJson(unit)}});
  return list;
}

CJson NodesJson(const std::shared_ptr<const std::vector<CNodeState>>& nodes) {
  CJson list = CJson::array();
  if (!nodes) return list;
  for (const CNodeState& node : *nodes) {
    list.push_back({{"name", ToJson(node.name)},
                    {"up", node.isUp},
                    {"answered", node.hasAnswered},
                    {"since", ToJson(node.since)},
                    {"reason", ToJson(node.reason)}});
    if (node.next) list.back()["next"] = ToJson(*node.next);
  }
  return list;
}

CJson FoldersJson(const CFeedFacts& facts, const CFeedFolders& folders) {
  CJson list = CJson::array();
  std::set<CString> seen;
  for (const auto* logs : {&facts.outputs, &facts.summaries})
    for (const CFeedFacts::CLog& log : *logs) {
      if (log.folder.IsEmpty() || !seen.insert(log.folder).second) continue;
      const auto bytes = folders.FreeBytes(log.folder);
      list.push_back({{"path", ToJson(log.folder)}, {"free", bytes ? CJson(*bytes) : CJson()}});
    }
  return list;
}

CJson UnsavedJson(const CFeedSaves& saves) {
  CJson list = CJson::array();
  for (const auto& [path, log] : saves.unsaved)
    list.push_back({{"log", ToJson(log.key)},
                    {"path", ToJson(path)},
                    {"reason", ToJson(log.reason)},
                    {"rows", log.rows}});
  return list;
}

CJson MessageJson(const CFeedSource::Messages::CEntry& entry) {
  const CKeptMessage& message = entry.object;
  return {{"number", entry.number},
          {"time", ToJson(message.time)},
          {"severity", SeverityWord(message.severity)},
          {"function", FunctionWord(message.function)},
          {"link", ToJson(message.link)},
          {"name", ToJson(message.name)},
          {"text", ToJson(message.text)}};
}

// The file's name without its ending.
CString NameOf(const CString& configuration) {
  const CString file = configuration.Mid(configuration.ReverseFind('/') + 1);
  const int dot = file.ReverseFind('.');
  return dot > 0 ? file.Left(dot) : file;
}

void AppendNumber(std::string& text, float value) {
  if (!std::isfinite(value)) {
    text += std::isnan(value) ? "\"nan\"" : value > 0 ? "\"inf\"" : "\"-inf\"";
    return;
  }
  char digits[32];  // a float needs at most 15
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

}  // namespace

std::string HelloLine(const CFeedOwner& owner, const CFeedSource::CView& view) {
  const CFeedFacts& facts = *view.facts;
  return JsonLine({{"type", "hello"},
                   {"feed", kFeedVersion},
                   {"name", ToJson(NameOf(owner.configuration))},
                   {"vastra", VASTRA_VERSION},
                   {"configuration", ToJson(owner.configuration)},
                   {"pid", ::getpid()},
                   {"started", ToJson(owner.started)},
                   {"period", facts.period},
                   {"variables", NamesJson(view.names)},
                   {"units", UnitsJson(facts)},
                   {"stages",
                    {{"nodes", TextsJson(facts.nodes)},
                     {"origins", OriginsJson(facts)},
                     {"replayed", facts.replayed},
                     {"outputs", LogsJson(facts.outputs)},
                     {"summaries", LogsJson(facts.summaries)},
                     {"writes", TextsJson(facts.writes)},
                     {"smart", facts.isSmart}}}});
}

std::string StateLine(const CFeedSource::CView& view, const CLiveNewest& newest,
                      const CFeedFolders& folders) {
  const CFeedStatus& status = *view.status;
  std::optional<CFeedLast> last = view.last;
  if (newest.read != Clock::time_point()) last = {newest.time, newest.read};
  CJson json = {{"type", "state"},
                {"state", kStates[static_cast<std::size_t>(status.state)]},
                {"since", ToJson(status.since)},
                {"reason", ToJson(status.reason)},
                {"nodes", NodesJson(newest.nodes)},
                {"writes", NodesJson(newest.written)},
                {"folders", FoldersJson(*view.facts, folders)},
                {"unsaved", UnsavedJson(*view.saves)},
                {"lastError", view.lastError ? MessageJson(*view.lastError) : CJson()},
                {"lastSample", last ? ToJson(last->time) : CJson()},
                {"lastSampleAge", nullptr}};
  if (last) json["lastSampleAge"] = std::chrono::duration<double>(Clock::now() - last->read).count();
  return JsonLine(json);
}

std::string CountsLine(const CFeedSource::CView& view, const CLiveNewest& newest) {
  const CScanCounts& scans = newest.counts.scans;
  CJson json = {{"type", "counts"}};
  json.update(CountsJson(scans));
  json["scans"] = scans.read + scans.failedReads;
  json["logs"] = {{"closed", view.saves->closed}, {"failed", view.saves->failed}};
  json["ledger"] = newest.ledger ? LedgerJson(*newest.ledger) : CJson::array();
  return JsonLine(json);
}

std::string MessageLine(const CFeedSource::Messages::CEntry& entry) {
  CJson json = {{"type", "message"}};
  json.update(MessageJson(entry));
  return JsonLine(json);
}

std::string LogLine(const CFeedSource::Logs::CEntry& entry) {
  const CFeedLog& log = entry.object;
  CJson json = {{"type", "log"},
                {"event", log.isSaved ? "closed" : "failed"},
                {"log", ToJson(log.source.key)},
                {"name", ToJson(log.source.name)},
                {"path", ToJson(log.path)},
                {"rows", log.rows}};
  if (log.isSaved) {
    json["first"] = ToJson(log.first);
    json["last"] = ToJson(log.last);
    json["variables"] = NamesJson(log.variables);
  } else {
    json["reason"] = ToJson(log.reason);
  }
  return JsonLine(json);
}

void CFeedSample::Set(const CLiveNumbers& numbers) {
  m_head = R"({"type":"sample","number":)" + std::to_string(numbers.number) + R"(,"time":)" +
           ToJson(numbers.time).dump() + R"(,"values":[)";
  m_values.clear();
  m_ends.clear();
  for (const float value : numbers.values) {
    if (!m_ends.empty()) m_values += ',';
    AppendNumber(m_values, value);
    m_ends.push_back(m_values.size());
  }
}

std::string CFeedSample::Line() const { return m_head + m_values + "]}\n"; }

std::string CFeedSample::Line(const std::vector<int>& indexes) const {
  std::string line = m_head;
  for (const int index : indexes) {
    if (line.size() != m_head.size()) line += ',';
    if (index < 0) {
      line += "null";
      continue;
    }
    const auto i = static_cast<std::size_t>(index);
    const std::size_t begin = i == 0 ? 0 : m_ends[i - 1] + 1;
    line.append(m_values, begin, m_ends[i] - begin);
  }
  return line + "]}\n";
}

}  // namespace vastra
