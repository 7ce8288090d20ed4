#include "host/desktop/value_statistics.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace vastra {
namespace {

using Shared = std::shared_ptr<const std::vector<CString>>;

Shared SharedNames(const CStringArray& names) {
  return std::make_shared<const std::vector<CString>>(names.begin(), names.end());
}

// The ranges of former, in the order of names.
std::vector<CValueRange> RangesOf(const std::vector<CString>& names,
                                  const CValueStatistics::CResults& former) {
  std::unordered_map<std::string_view, CValueRange> known;
  for (std::size_t i = 0; i < former.ranges.size(); ++i)
    known.emplace((*former.names)[i].View(), former.ranges[i]);
  std::vector<CValueRange> ranges(names.size());
  for (std::size_t i = 0; i < names.size(); ++i)
    if (const auto found = known.find(names[i].View()); found != known.end()) ranges[i] = found->second;
  return ranges;
}

}  // namespace

void CValueStatistics::Copy(CResults& results) const {
  const std::lock_guard lock(m_mutex);
  results = m_results;
}

void CValueStatistics::Reset() {
  const std::lock_guard lock(m_mutex);
  std::ranges::fill(m_results.ranges, CValueRange());
  _ftime(m_results.since);
  ++m_results.resets;
}

void CValueStatistics::GoesOn() {
  const std::lock_guard lock(m_mutex);
  m_results.isRunning = true;
}

void CValueStatistics::Started(const CStringArray& names) {
  CResults results;
  results.names = SharedNames(names);
  results.ranges.resize(results.names->size());
  results.isRunning = true;
  _ftime(results.since);
  const std::lock_guard lock(m_mutex);
  results.resets = m_results.resets + 1;
  std::swap(m_results, results);  // the former ones are destroyed after the lock
}

void CValueStatistics::Renamed(const CStringArray& names) {
  const Shared renamed = SharedNames(names);
  const std::lock_guard lock(m_mutex);
  m_results.ranges = RangesOf(*renamed, m_results);
  m_results.names = renamed;
}

void CValueStatistics::Sampled(const CLogSample& sample) {
  const std::lock_guard lock(m_mutex);
  const auto count = std::min(m_results.ranges.size(), static_cast<std::size_t>(sample.m_values.GetSize()));
  const float* value = sample.m_values.GetData();
  for (CValueRange* range = m_results.ranges.data(); range != m_results.ranges.data() + count; ++range) {
    const float number = *value++;
    if (!std::isfinite(number)) continue;
    range->sum += static_cast<double>(number);
    range->min = std::min(range->min, number);
    range->max = std::max(range->max, number);
    ++range->count;
  }
}

void CValueStatistics::Stopped() {
  const std::lock_guard lock(m_mutex);
  m_results.isRunning = false;
}

}  // namespace vastra
