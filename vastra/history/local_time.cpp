#include "vastra/history/local_time.h"

#include <algorithm>

#include "vastra/platform/time.h"

namespace vastra {

std::int64_t LocalOffset(std::int64_t moment) { return CTime(moment).GetLocalTm().tm_gmtoff; }

void CLocalOffset::SetQuarter(std::int64_t quarter) {
  m_quarter = quarter;
  m_offset = LocalOffset(quarter * kQuarter);
  m_isConstant = m_offset == LocalOffset(quarter * kQuarter + kQuarter - 1);
}

// The offset is one of those a day before and after: zones change their clocks less often.
std::int64_t MomentOfLocal(std::int64_t shown) {
  constexpr std::int64_t kDay = 86400;
  const std::int64_t before = shown - LocalOffset(shown - kDay), after = shown - LocalOffset(shown + kDay);
  const auto shows = [shown](std::int64_t moment) { return moment + LocalOffset(moment) == shown; };
  const auto [first, last] = std::minmax(before, after);
  if (shows(first)) return first;
  return shows(last) ? last : before;
}

}  // namespace vastra
