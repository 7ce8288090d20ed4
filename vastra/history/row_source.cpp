#include "vastra/history/row_source.h"

#include <algorithm>
#include <new>

namespace vastra {

bool CRowSource::Open(const CMomentRange& range) {
  const bool isFound =
      Log().isOrdered ? m_values.Find(range.from, m_begin) && m_values.Find(range.to, m_end) : Sort(range);
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
  std::uint32_t first = m_begin, count = m_end - m_begin;
  if (count && !m_sorted.empty()) {
    first = m_sorted[m_begin];
    count = 1;
    while (m_begin + count < m_end && m_sorted[m_begin + count] == first + count) ++count;
  }
  if (count == 0 || !m_values.Load(first, count, m_mostBytes, m_samples)) {
    m_values.Close();
    return false;
  }
  m_begin += m_samples.count;
  m_done += m_samples.count;
  m_next = 0;
  m_moment = MomentOf(m_samples.times[0]);
  return true;
}

void CRowSource::Take(CMoment limit, std::uint32_t most, CRowStretch& stretch) {
  const _timeb* begin = m_samples.times + m_next;
  const _timeb* end = m_samples.times + m_samples.count;
  if (MomentOf(end[-1]) >= limit)
    end = std::partition_point(begin, end, [limit](const _timeb& time) { return MomentOf(time) < limit; });
  const auto before = static_cast<std::uint32_t>(end - begin);
  stretch.count = std::min(most, std::max<std::uint32_t>(before, 1));
  stretch.times = begin;
  stretch.values = m_samples.records + m_next * m_samples.recordSize + SizeOfCount(m_samples.values);
  stretch.step = m_samples.recordSize;
  stretch.valueCount = m_samples.values;
  stretch.places = m_places->data();
  stretch.log = &Log();
  m_next += stretch.count;
}

}  // namespace vastra
