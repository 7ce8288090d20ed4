#include "host/cli/history/log_list_view.h"

#include "host/cli/number_text.h"
#include "vastra/history/moment_text.h"
#include "vastra/history/row_reader.h"

namespace vastra {
namespace {

std::string MomentText(CMoment moment) {
  char text[kMaxMomentText];
  return {text, CMomentText(ETimeForm::iso).Put(text, moment)};
}

std::string SpanText(CMoment from, CMoment to) { return MomentText(from) + " - " + MomentText(to); }

// The time record of the first or last sample at a moment of log; null if it cannot be read any more.
CJson TimeJson(const CHistoryLog& log, CMoment moment, bool isLast) {
  const std::vector<CHistoryLog> logs = {log};
  CRowReader reader(logs, {.range = {moment, moment + 1}});
  CHistoryRow row;
  CJson time;
  while ((isLast || time.is_null()) && reader.Next(row)) time = ToJson(row.time);
  return time;
}

}  // namespace

std::string LogLine(const CHistoryLog& log, const CString& shown) {
  if (!log.fault.IsEmpty()) return shown.Std() + "  " + log.fault.Std();
  const std::string counts =
      shown.Std() + "  " + Counted(log.samples, "sample") + " of " + Counted(log.names->size(), "variable");
  return log.samples ? counts + "  " + SpanText(log.first, log.last) : counts;
}

CJson LogJson(const CHistoryLog& log, const CString& shown) {
  CJson json = {{"file", ToJson(shown)}};
  if (!log.fault.IsEmpty()) {
    json["error"] = ToJson(log.fault);
    return json;
  }
  json["names"] = CJson::array();
  for (const CString& name : *log.names) json["names"].push_back(ToJson(name));
  json["samples"] = log.samples;
  json["first"] = log.samples ? TimeJson(log, log.first, false) : CJson();
  json["last"] = log.samples ? TimeJson(log, log.last, true) : CJson();
  json["size"] = log.size;
  return json;
}

std::vector<std::string> GapLines(const std::vector<CGap>& gaps, std::int64_t longerThan) {
  const auto textOf = [](std::int64_t span) { return InHours(std::chrono::milliseconds(span)).Std(); };
  std::vector<std::string> lines;
  lines.reserve(gaps.size());
  for (const CGap& gap : gaps)
    lines.push_back("gap  " + SpanText(gap.from, gap.to) + "  " + textOf(gap.to - gap.from));
  if (gaps.empty()) lines.push_back("no gap longer than " + textOf(longerThan));
  return lines;
}

CJson GapsJson(const std::vector<CGap>& gaps) {
  CJson list = CJson::array();
  for (const CGap& gap : gaps) list.push_back({MomentText(gap.from), MomentText(gap.to)});
  return list;
}

}  // namespace vastra
