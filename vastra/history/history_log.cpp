#include "vastra/history/history_log.h"

#include <algorithm>
#include <set>

#include "vastra/history/catalogue.h"
#include "vastra/history/log_values.h"

namespace vastra {
namespace {

// Whether the log, whose samples are before and after the range, has one in it.
bool HasRowInside(const CHistoryLog& log, const CMomentRange& range) {
  COpenLogs open;
  CLogValues values(log, open);
  std::uint32_t begin = 0, end = values.Count();
  if (log.isOrdered) return values.Find(range.from, begin) && values.Find(range.to, end) && begin < end;
  std::vector<_timeb> times(end);
  return values.ReadTimes(0, end, times.data()) &&
         std::any_of(times.begin(), times.end(),
                     [&](const _timeb& time) { return range.Has(MomentOf(time)); });
}

bool HasRow(const CHistoryLog& log, const CMomentRange& range) {
  if (!log.Meets(range)) return false;
  return range.Has(log.first) || range.Has(log.last) || HasRowInside(log, range);
}

}  // namespace

std::vector<CString> NamesOf(const std::vector<CHistoryLog>& logs, const CMomentRange& range) {
  std::set<const std::vector<CString>*> lists;
  std::set<CString> known;
  std::vector<CString> names;
  const auto add = [&](const CHistoryLog& log) {
    if (!log.names || !lists.insert(log.names.get()).second) return;
    for (const CString& name : *log.names)
      if (known.insert(name).second) names.push_back(name);
  };
  for (const CHistoryLog& log : logs)
    if (log.names && !lists.contains(log.names.get()) && HasRow(log, range)) add(log);
  if (names.empty()) std::for_each(logs.begin(), logs.end(), add);
  return names;
}

CMomentRange RangeOf(const std::vector<CHistoryLog>& logs) {
  CMomentRange range = {kEndMoment, kFirstMoment};
  for (const CHistoryLog& log : logs) {
    if (log.samples == 0) continue;
    range.from = std::min(range.from, log.first);
    range.to = std::max(range.to, log.last + 1);
  }
  return range.from < range.to ? range : CMomentRange{0, 0};
}

}  // namespace vastra
