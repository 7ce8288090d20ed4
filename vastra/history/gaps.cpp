#include <algorithm>

#include "vastra/history/catalogue.h"
#include "vastra/history/log_values.h"

namespace vastra {
namespace {

constexpr std::uint32_t kTimesInPart = 16384;

using CMayGoOn = std::function<bool(std::size_t)>;

// The rows of logs as stretches between whose rows there is no gap. Both ends are moments of rows.
class CStretches {
 public:
  CStretches(const CMomentRange& range, std::int64_t longerThan, const CMayGoOn& mayGoOn)
      : m_range(range), m_longest(longerThan), m_mayGoOn(mayGoOn) {}

  // False if the search has to end.
  bool AddLog(const CHistoryLog& log);
  std::vector<CGap> Gaps();

 private:
  bool AddOrdered(CLogValues& values);
  bool AddSorted(CLogValues& values);
  bool MayGoOn() const { return !m_mayGoOn || m_mayGoOn(m_stretches.size()); }
  // The next row of a log, in the order of moments.
  void AddRow(CMoment moment);
  void EndLog();

  CMomentRange m_range;
  std::int64_t m_longest;
  const CMayGoOn& m_mayGoOn;
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

bool CStretches::AddLog(const CHistoryLog& log) {
  COpenLogs open;
  CLogValues values(log, open);
  const bool mayGoOn = log.isOrdered ? AddOrdered(values) : AddSorted(values);
  EndLog();
  return mayGoOn;
}

bool CStretches::AddOrdered(CLogValues& values) {
  std::uint32_t first = 0, end = 0;
  if (!values.Find(m_range.from, first) || !values.Find(m_range.to, end)) return MayGoOn();
  std::vector<_timeb> times(std::min(end - first, kTimesInPart));
  for (; first < end; first += static_cast<std::uint32_t>(times.size())) {
    times.resize(std::min<std::size_t>(times.size(), end - first));
    if (!values.ReadTimes(first, static_cast<std::uint32_t>(times.size()), times.data())) break;
    for (const _timeb& time : times) AddRow(MomentOf(time));
    if (!MayGoOn()) return false;
  }
  return MayGoOn();
}

// The stretches of a log in memory are at most as many as its times, which are in memory, too.
bool CStretches::AddSorted(CLogValues& values) {
  std::vector<_timeb> times(values.Count());
  if (!values.ReadTimes(0, values.Count(), times.data())) return MayGoOn();
  std::vector<CMoment> moments(times.size());
  std::transform(times.begin(), times.end(), moments.begin(), MomentOf);
  std::sort(moments.begin(), moments.end());
  std::for_each(moments.begin(), moments.end(), [this](CMoment moment) { AddRow(moment); });
  return MayGoOn();
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
                           std::int64_t longerThan, const CMayGoOn& mayGoOn) {
  CStretches stretches(range, longerThan, mayGoOn);
  for (const CHistoryLog& log : logs)
    if (log.Meets(range) && !stretches.AddLog(log)) return {};
  return stretches.Gaps();
}

}  // namespace vastra
