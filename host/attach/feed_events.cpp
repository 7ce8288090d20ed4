#include "host/attach/feed_events.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/common/json_text.h"

namespace vastra {
namespace {

using nlohmann::json;

// What is read of a list of records, such as nodes and losses; a logger has far less.
constexpr std::size_t kMostRecords = 10'000;

// Reading one field: each function sets its value only if the field is there and has its type.
const json* FieldOf(const json& object, const char* key) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(key);
  return found == object.end() ? nullptr : &*found;
}

std::optional<double> NumberOf(const json& value) {
  if (value.is_number()) return value.get<double>();
  if (value == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (value == "inf") return std::numeric_limits<double>::infinity();
  if (value == "-inf") return -std::numeric_limits<double>::infinity();
  return std::nullopt;
}

void Set(const json& value, std::string& text) {
  if (value.is_string()) text = value.get_ref<const std::string&>();
}
void Set(const json& value, CString& text) {
  if (value.is_string()) text = CString(value.get_ref<const std::string&>());
}
void Set(const json& value, bool& flag) {
  if (value.is_boolean()) flag = value.get<bool>();
}
void Set(const json& value, std::uint64_t& number) {
  if (value.is_number_unsigned()) number = value.get<std::uint64_t>();
}
void Set(const json& value, std::int64_t& number) {
  if (value.is_number_integer()) number = value.get<std::int64_t>();
}
void Set(const json& value, int& number) {
  if (value.is_number_integer()) number = static_cast<int>(value.get<std::int64_t>());
}
void Set(const json& value, double& number) { number = NumberOf(value).value_or(number); }
// A null or another type is a variable that does not exist.
void Set(const json& value, float& number) {
  number = static_cast<float>(NumberOf(value).value_or(std::numeric_limits<double>::quiet_NaN()));
}

template <class T>
bool SetPart(const json& value, T& part) {
  if (!value.is_number_integer()) return false;
  const auto number = value.get<std::int64_t>();
  part = static_cast<T>(number);
  return part == number;
}

std::optional<_timeb> TimeOf(const json& value) {
  _timeb time;
  const bool isTime = value.is_array() && value.size() == 4 && SetPart(value[0], time.time) &&
                      SetPart(value[1], time.millitm) && SetPart(value[2], time.timezone) &&
                      SetPart(value[3], time.dstflag);
  return isTime ? std::optional(time) : std::nullopt;
}

void Set(const json& value, _timeb& time) { time = TimeOf(value).value_or(time); }

void Set(const json& value, CStageFacts& stage);
void Set(const json& value, COriginFacts& origin);
void Set(const json& value, CUnitFacts& unit);
void Set(const json& value, CMessageLine& message);
void Set(const json& value, CNodeFacts& node);
void Set(const json& value, CFolderFacts& folder);
void Set(const json& value, CUnsavedFacts& log);
void Set(const json& value, CLogLoss& loss);
void Set(const json& value, CLedgerFacts& ledger);

void Set(const json& value, std::optional<_timeb>& time) { time = TimeOf(value); }
void Set(const json& value, std::optional<double>& number) {
  number = NumberOf(value);
  if (number && !std::isfinite(*number)) number.reset();
}
void Set(const json& value, std::optional<std::uint64_t>& number) {
  if (value.is_number_unsigned()) number = value.get<std::uint64_t>();
}
void Set(const json& value, std::optional<CMessageLine>& message) {
  if (value.is_object()) Set(value, message.emplace());
}

// A record cannot be larger than its part of the line; a list of values has one for each in the line.
template <class T>
void Set(const json& value, std::vector<T>& list) {
  if (!value.is_array()) return;
  constexpr bool kIsValue = std::is_same_v<T, float> || std::is_same_v<T, std::string>;
  list.resize(kIsValue ? value.size() : std::min(value.size(), kMostRecords));
  for (std::size_t i = 0; i < list.size(); ++i) Set(value[i], list[i]);
}

// Sets fields from the members of object: Read(object, "a", a, "b", b).
void Read(const json&) {}
template <class T, class... More>
void Read(const json& object, const char* key, T& field, More&&... more) {
  if (const json* value = FieldOf(object, key)) Set(*value, field);
  Read(object, std::forward<More>(more)...);
}

void Set(const json& value, CStageFacts& stage) {
  Read(value, "name", stage.name, "folder", stage.folder, "binary", stage.binary, "text", stage.text,
       "maxLogs", stage.maxLogs, "maxSamples", stage.maxSamples);
}

void Set(const json& value, COriginFacts& origin) {
  Read(value, "variables", origin.variables, "alive", origin.alive);
}

void Set(const json& value, CUnitFacts& unit) { Read(value, "variable", unit.variable, "unit", unit.unit); }

void Set(const json& value, CMessageLine& message) {
  std::string severity, function;
  Read(value, "number", message.number, "time", message.time, "severity", severity, "function", function,
       "link", message.link, "name", message.name, "text", message.text);
  message.severity = SeverityOf(severity);
  message.function = FunctionOf(function);
}

void Set(const json& value, CNodeFacts& node) {
  Read(value, "name", node.name, "up", node.up, "answered", node.answered, "since", node.since, "reason",
       node.reason, "next", node.next);
}

void Set(const json& value, CFolderFacts& folder) { Read(value, "path", folder.path, "free", folder.free); }

void Set(const json& value, CUnsavedFacts& log) {
  Read(value, "log", log.log, "path", log.path, "reason", log.reason, "rows", log.rows);
}

void Set(const json& value, CLogLoss& loss) {
  Read(value, "cause", loss.cause, "rows", loss.rows, "first", loss.first, "last", loss.last);
}

void Set(const json& value, CLedgerFacts& entry) {
  CLogLedger& ledger = entry.ledger;
  std::string kind;
  Read(value, "name", entry.name, "kind", kind, "offered", ledger.offered, "unwanted", ledger.unwanted,
       "taken", ledger.taken, "recovered", ledger.recovered, "onDisk", ledger.onDisk, "rotated",
       ledger.rotated, "inJournal", ledger.inJournal, "inMemory", ledger.inMemory, "lost", ledger.lost,
       "losses", ledger.losses);
  entry.isSummary = kind == "summary";
}

CFeedEvent HelloOf(const json& line) {
  CHelloLine hello;
  Read(line, "feed", hello.feed, "name", hello.name, "vastra", hello.vastra, "configuration",
       hello.configuration, "pid", hello.pid, "started", hello.started, "period", hello.period, "variables",
       hello.variables, "units", hello.units);
  if (const json* stages = FieldOf(line, "stages"))
    Read(*stages, "nodes", hello.nodes, "origins", hello.origins, "replayed", hello.replayed, "writes",
         hello.writes, "outputs", hello.outputs, "summaries", hello.summaries, "smart", hello.smart);
  return hello;
}

CFeedEvent StateOf(const json& line) {
  CStateLine state;
  Read(line, "state", state.state, "since", state.since, "reason", state.reason, "nodes", state.nodes,
       "writes", state.writes, "unsaved", state.unsaved, "folders", state.folders, "lastError",
       state.lastError, "lastSample", state.lastSample, "lastSampleAge", state.lastSampleAge);
  return state;
}

CFeedEvent SampleOf(const json& line) {
  CSampleLine sample;
  Read(line, "number", sample.number, "time", sample.time, "values", sample.values);
  return sample;
}

CFeedEvent CountsOf(const json& line) {
  CCountsLine counts;
  Read(line, "read", counts.read, "failedReads", counts.failedReads, "late", counts.late, "scans",
       counts.scans, "ledger", counts.ledger);
  auto& failed = counts.failedWrites;
  if (const json* writes = FieldOf(line, "failedWrites"))
    Read(*writes, "smart", failed.smart, "outputs", failed.outputs, "summaries", failed.summaries, "plcWrite",
         failed.plcWrite, "trend", failed.trend);
  if (const json* logs = FieldOf(line, "logs"))
    Read(*logs, "closed", counts.logs.closed, "failed", counts.logs.failed);
  return counts;
}

CFeedEvent MessageOf(const json& line) {
  CMessageLine message;
  Set(line, message);
  return message;
}

CFeedEvent LogOf(const json& line) {
  CLogLine log;
  std::string event;
  Read(line, "event", event, "log", log.log, "name", log.name, "path", log.path, "reason", log.reason, "rows",
       log.rows, "first", log.first, "last", log.last, "variables", log.variables);
  log.isClosed = event == "closed";
  return log;
}

CFeedEvent DroppedOf(const json& line) {
  CDroppedLine dropped;
  Read(line, "messages", dropped.messages, "logs", dropped.logs);
  return dropped;
}

CFeedEvent KeptOf(const json&) { return CKeptLine{}; }

CFeedEvent ErrorOf(const json& line) {
  CErrorLine error;
  Read(line, "text", error.text);
  return error;
}

constexpr struct {
  const char* type;
  CFeedEvent (*read)(const json&);
} kTypes[] = {{"hello", HelloOf},     {"state", StateOf},     {"sample", SampleOf},
              {"counts", CountsOf},   {"message", MessageOf}, {"log", LogOf},
              {"dropped", DroppedOf}, {"kept", KeptOf},       {"error", ErrorOf}};

}  // namespace

std::optional<CFeedEvent> ParseFeedEvent(std::string_view text) {
  const json line = ParseJson(text);
  if (!line.is_object()) throw CJsonFault("", "not an object");
  std::string type;
  Read(line, "type", type);
  for (const auto& known : kTypes)
    if (type == known.type) return known.read(line);
  return std::nullopt;
}

}  // namespace vastra
