#include <algorithm>

#include "vastra/history/catalogue.h"
#include "vastra/history/log_values.h"

namespace vastra {
namespace {

constexpr std::uint32_t kTimesInPart = 16384;

// The rows of logs as stretches between whose rows there is no gap. Both ends are moments of rows.
class CStretches {
 public:
  CStretches(const CMomentRange& range, std::int64_t longerThan) : m_range(range), m_longest(longerThan) {}

  void AddLog(const CHistoryLog& log);
  std::vector<CGap> Gaps();

 private:
  void AddOrdered(CLogValues& values);
  void AddSorted(CLogValues& values);
  // The next row of a log, in the order of moments.
  void AddRow(CMoment moment);
  void EndLog();

  CMomentRange m_range;
  std::int64_t m_longest;
  std::vector<CGap> m_stretches;  // in the form of gaps
  CGap m_stretch;                 // that goes on
  bool m_isOpen = false;
};

void CStretches::AddRow(CMoment moment) {
  if (!m_range.Has(moment)) return;
  if (m_isOpen && moment - m_stretch.to > m_longest) EndLog();
  if (!m_isOpen) m_stretch.from = moment;
  m_stretch.to = moment;
  m_isOpen = true;
}

void CStretches::EndLog() {
  if (m_isOpen) m_stretches.push_back(m_stretch);
  m_isOpen = false;
}

void CStretches::AddLog(const CHistoryLog& log) {
  COpenLogs open;
  CLogValues values(log, open);
  if (log.isOrdered)
    AddOrdered(values);
  else
    AddSorted(values);
  EndLog();
}

void CStretches::AddOrdered(CLogValues& values) {
  std::uint32_t first = 0, end = 0;
  if (!values.Find(m_range.from, first) || !values.Find(m_range.to, end)) return;
  std::vector<_timeb> times(std::min(end - first, kTimesInPart));
  for (; first < end; first += static_cast<std::uint32_t>(times.size())) {
    times.resize(std::min<std::size_t>(times.size(), end - first));
    if (!values.ReadTimes(first, static_cast<std::uint32_t>(times.size()), times.data())) return;
    for (const _timeb& time : times) AddRow(MomentOf(time));
  }
}

void CStretches::AddSorted(CLogValues& values) {
  std::vector<_timeb> times(values.Count());
  if (!values.ReadTimes(0, values.Count(), times.data())) return;
  std::vector<CMoment> moments(times.size());
  std::transform(times.begin(), times.end(), moments.begin(), MomentOf);
  std::sort(moments.begin(), moments.end());
  std::for_each(moments.begin(), moments.end(), [this](CMoment moment) { AddRow(moment); });
}

std::vector<CGap> CStretches::Gaps() {
  std::vector<CGap> gaps;
  std::sort(m_stretches.begin(), m_stretches.end(),
            [](const CGap& a, const CGap& b) { return a.from < b.from; });
  CMoment reached = m_range.from;
  m_stretches.push_back({m_range.to, m_range.to});
  for (const CGap& stretch : m_stretches) {
    if (stretch.from - reached > m_longest) gaps.push_back({reached, stretch.from});
    reached = std::max(reached, stretch.to);
  }
  return gaps;
}

}  // namespace

std::vector<CGap> FindGaps(const std::vector<CHistoryLog>& logs, const CMomentRange& range,
                           std::int64_t longerThan) {
  CStretches stretches(range, longerThan);
  for (const CHistoryLog& log : logs)
    if (log.Meets(range)) stretches.AddLog(log);
  return stretches.Gaps();
}

}  // namespace vastra
