#include "vastra/charts/chart_rows.h"

namespace vastra {
namespace {

constexpr std::int64_t kMostSteps = 3;  // a longer distance than so many usual ones is a gap

std::int64_t LongestOf(CMoment first, CMoment last, std::uint64_t rows) {
  return rows < 2
             ? 0
             : kMostSteps * std::max<std::int64_t>(1, (last - first) / static_cast<std::int64_t>(rows - 1));
}

double Share(const CMomentRange& range, CMoment first, CMoment last, std::uint64_t rows) {
  const CMoment from = std::max(range.from, first), to = std::min(range.to, last + 1);
  return from < to ? static_cast<double>(rows) * static_cast<double>(to - from) /
                         static_cast<double>(last + 1 - first)
                   : 0;
}

// A log of one row has no distance: such logs that follow each other are one stretch.
void AddStretch(std::vector<CTimeline::CStretch>& stretches, const CTimeline::CStretch& stretch,
                bool& isOfSingles) {
  if (stretch.rows > 1 || stretches.empty() || !isOfSingles) {
    isOfSingles = stretch.rows == 1;
    stretches.push_back(stretch);
    return;
  }
  stretches.back().last = stretch.last;
  ++stretches.back().rows;
}

// The times that several of the logs, which are in the order of first, share, in order and apart from each
// other.
std::vector<CMomentRange> SharedTimes(const std::vector<CTimeline::CStretch>& logs) {
  std::vector<CMomentRange> shared;
  CMoment last = kFirstMoment - 1;  // of the logs before
  for (const CTimeline::CStretch& log : logs) {
    const CMomentRange range = {log.first, std::min(log.last, last) + 1};
    last = std::max(last, log.last);
    if (range.from >= range.to) continue;
    if (shared.empty() || range.from > shared.back().to)
      shared.push_back(range);
    else
      shared.back().to = std::max(shared.back().to, range.to);
  }
  return shared;
}

bool IsSameLog(const CHistoryLog& a, const CHistoryLog& b) {
  return a.size == b.size && a.samples == b.samples && a.first == b.first && a.last == b.last &&
         a.isJournal == b.isJournal && (a.isJournal || a.status == b.status) && a.fault == b.fault;
}

// What has changed of a log that has other contents now.
void AddChange(const CHistoryLog& before, const CHistoryLog& now, std::vector<CMomentRange>& changed) {
  const bool hasGrown = now.isJournal && before.isJournal && before.samples > 0 && now.isOrdered &&
                        before.first == now.first && before.samples < now.samples &&
                        before.names == now.names;
  if (hasGrown) return changed.push_back({before.last, now.last + 1});
  for (const CHistoryLog* log : {&before, &now})
    if (log->samples) changed.push_back({log->first, log->last + 1});
}

}  // namespace

CChartRows::CChartRows(std::vector<CHistoryLog> logs, std::shared_ptr<const CLiveSamples> live,
                       const CLiveHead& head, bool isThinned)
    : m_logs(std::move(logs)),
      m_pLive(std::move(live)),
      m_generation(head.generation),
      m_isThinned(isThinned) {
  if (m_pLive && head.first < head.end) m_since = head.steadySince;
  for (const CHistoryLog& log : m_logs) {
    if (!log.names || log.samples == 0) continue;
    const auto [at, isNew] = m_listOf.try_emplace(log.names.get(), m_listOf.size() + 1);
    if (isNew) AddNames(*log.names, at->second);
  }
  if (!m_pLive || !head.names) return;
  m_liveNames = head.names;
  AddNames(*m_liveNames, 0);
}

void CChartRows::AddNames(const CNames& names, std::size_t list) {
  for (const CString& name : names) {
    const auto [at, isNew] = m_lists.try_emplace(name);
    if (isNew) m_variables.push_back(name);
    if (at->second.empty() || at->second.back() != list) at->second.push_back(list);
  }
}

bool CChartRows::IsComplete() const {
  if (!m_pLive) return true;
  const CLiveHead head = m_pLive->Head();
  if (head.generation != m_generation) return false;
  return head.first == head.end ? m_since == kEndMoment : m_since != kEndMoment && head.since <= m_since;
}

CLiveHead CChartRows::Head() const {
  CLiveHead head = m_pLive ? m_pLive->Head() : CLiveHead();
  return head.generation == m_generation ? head : CLiveHead();
}

CMomentRange CChartRows::Range() const {
  CMomentRange range = RangeOf(m_logs);
  const CLiveHead head = Head();
  if (head.first == head.end) return range;
  if (range.from == range.to) range = {head.firstMoment, head.firstMoment + 1};
  return {std::min(range.from, head.firstMoment), std::max(range.to, head.lastMoment + 1)};
}

bool CChartRows::HaveChanged(const std::vector<CString>& variables, const CMomentRange& range,
                             const std::vector<CMomentRange>& inLogs, const CMomentRange& inRing) const {
  const auto meet = [](const CMomentRange& a, const CMomentRange& b) {
    return std::max(a.from, b.from) < std::min(a.to, b.to);
  };
  return std::ranges::any_of(variables, [&](const CString& variable) {
    const CTimeline& timeline = TimelineOf(variable);
    const CMomentRange ofLogs = {range.from, std::min(range.to, timeline.since)},
                       ofRing = {std::max(range.from, timeline.since), range.to};
    return (timeline.isLive && meet(ofRing, inRing)) ||
           std::ranges::any_of(inLogs, [&](const CMomentRange& changed) { return meet(ofLogs, changed); });
  });
}

const CTimeline& CChartRows::TimelineOf(const CString& variable) const {
  static const std::vector<std::size_t> kNone;
  const auto known = m_lists.find(variable);
  const std::vector<std::size_t>& lists = known == m_lists.end() ? kNone : known->second;
  const std::lock_guard lock(m_mutex);
  const auto [at, isNew] = m_timelines.try_emplace(lists);
  CTimeline& timeline = at->second;
  if (!isNew) return timeline;
  std::vector<CTimeline::CStretch> stretches;
  for (const CHistoryLog& log : m_logs)
    if (const auto list = log.names && log.samples ? m_listOf.find(log.names.get()) : m_listOf.end();
        list != m_listOf.end() && std::find(lists.begin(), lists.end(), list->second) != lists.end())
      stretches.push_back({log.first, log.last, log.samples});
  std::stable_sort(stretches.begin(), stretches.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  timeline.shared = SharedTimes(stretches);
  bool isOfSingles = false;
  for (const CTimeline::CStretch& stretch : stretches) AddStretch(timeline.stretches, stretch, isOfSingles);
  for (CTimeline::CStretch& stretch : timeline.stretches)
    stretch.longest = LongestOf(stretch.first, stretch.last, stretch.rows);
  timeline.isLive = m_since != kEndMoment && std::find(lists.begin(), lists.end(), 0U) != lists.end();
  // Without logs there is nothing to prefer to the oldest samples of the ring.
  if (timeline.isLive) timeline.since = timeline.stretches.empty() ? kFirstMoment : m_since;
  if (timeline.isLive && m_isThinned)
    for (const CTimeline::CStretch& stretch : timeline.stretches)
      timeline.since = std::max(timeline.since, stretch.last + 1);
  return timeline;
}

std::vector<CVariableGroup> CChartRows::GroupsOf(const std::vector<CString>& variables) const {
  std::vector<CVariableGroup> groups;
  for (std::size_t i = 0; i < variables.size(); ++i) {
    const CTimeline* const timeline = &TimelineOf(variables[i]);
    auto group = std::find_if(groups.begin(), groups.end(),
                              [&](const CVariableGroup& known) { return known.timeline == timeline; });
    if (group == groups.end()) group = groups.insert(group, {timeline});
    group->places.push_back(i);
  }
  return groups;
}

double CChartRows::EstimateLogs(const CTimeline& timeline, const CMomentRange& range) const {
  const CMomentRange ofLogs = {range.from, std::min(range.to, timeline.since)};
  double rows = 0;
  for (const CTimeline::CStretch& stretch : timeline.stretches)
    rows += Share(ofLogs, stretch.first, stretch.last, stretch.rows);
  return rows;
}

double CChartRows::Estimate(const CTimeline& timeline, const CMomentRange& range,
                            const CLiveHead& head) const {
  const double rows = EstimateLogs(timeline, range);
  if (!timeline.isLive || range.to <= timeline.since || head.first == head.end) return rows;
  return rows + Share({std::max(range.from, timeline.since), range.to}, head.firstMoment, head.lastMoment,
                      head.end - head.first);
}

double CChartRows::Expect(const CTimeline& timeline, const CMomentRange& range, const CLiveHead& head) const {
  const std::uint64_t live = head.end - head.first;
  const CMoment from = std::max({range.from, timeline.since, head.firstMoment});
  if (!timeline.isLive || live < 2 || range.to <= head.lastMoment || from >= range.to)
    return Estimate(timeline, range, head);
  const double distance =
      static_cast<double>(head.lastMoment + 1 - head.firstMoment) / static_cast<double>(live);
  return EstimateLogs(timeline, range) + static_cast<double>(range.to - from) / distance;
}

std::int64_t CChartRows::LongestStep(const CTimeline& timeline, CMoment moment, const CLiveHead& head) const {
  std::int64_t longest = 0;
  if (timeline.isLive && moment >= timeline.since) {
    longest = LongestOf(head.firstMoment, head.lastMoment, head.end - head.first);
    if (longest > 0) return longest;
  }
  const std::vector<CTimeline::CStretch>& stretches = timeline.stretches;
  const auto after =
      std::upper_bound(stretches.begin(), stretches.end(), moment,
                       [](CMoment at, const CTimeline::CStretch& stretch) { return at < stretch.first; });
  // The log of the moment, or else the ones beside it.
  if (after != stretches.begin()) longest = std::prev(after)->longest;
  const bool isInside = after != stretches.begin() && std::prev(after)->last >= moment && longest > 0;
  if (!isInside && after != stretches.end()) longest = std::max(longest, after->longest);
  return longest;
}

std::vector<CMomentRange> ChangedRanges(const std::vector<CHistoryLog>& before,
                                        const std::vector<CHistoryLog>& now) {
  std::map<CString, const CHistoryLog*> byPath;
  for (const CHistoryLog& log : before) byPath[log.path] = &log;
  std::vector<CMomentRange> changed;
  for (const CHistoryLog& log : now) {
    const auto known = byPath.find(log.path);
    if (known == byPath.end())
      AddChange({}, log, changed);
    else if (!IsSameLog(*known->second, log))
      AddChange(*known->second, log, changed);
    if (known != byPath.end()) byPath.erase(known);
  }
  for (const auto& [path, log] : byPath) AddChange(*log, {}, changed);
  return changed;
}

}  // namespace vastra
