#include "vastra/history/row_source.h"

#include <algorithm>
#include <new>

namespace vastra {

bool CRowSource::Open(const CMomentRange& range) {
  const bool isFound =
      Log().isOrdered ? m_values.Find(range.from, m_next) && m_values.Find(range.to, m_end) : Sort(range);
  return isFound && Load();
}

// The samples of the range of a log whose times go backwards, in the order of their moments.
bool CRowSource::Sort(const CMomentRange& range) {
  std::vector<_timeb> times(m_values.Count());
  if (!m_values.ReadTimes(0, m_values.Count(), times.data())) return false;
  for (std::uint32_t i = 0; i < times.size(); ++i)
    if (range.Has(MomentOf(times[i]))) m_sorted.push_back(i);
  std::stable_sort(m_sorted.begin(), m_sorted.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return MomentOf(times[a]) < MomentOf(times[b]); });
  m_end = static_cast<std::uint32_t>(m_sorted.size());
  return true;
}

// Loads the next samples that follow each other in the log.
bool CRowSource::Load() {
  if (m_next == m_end) {
    m_values.Close();
    return false;
  }
  std::uint32_t first = m_next, count = m_end - m_next;
  if (!m_sorted.empty()) {
    first = m_sorted[m_next];
    count = 1;
    while (m_next + count < m_end && m_sorted[m_next + count] == first + count) ++count;
  }
  if (!m_values.Load(first, count, m_mostBytes, m_samples)) {
    m_values.Close();
    return false;
  }
  m_next += m_samples.count;
  m_done += m_samples.count;
  Show(0);
  return true;
}

}  // namespace vastra
