// Local time for moments: which offset the zone of the machine has, and which moment a clock showed.
#pragma once

#include <cstdint>

#include "vastra/platform/api.h"

namespace vastra {

// How far local time is ahead of UTC at a moment, in seconds. moment: seconds since 1970 in UTC.
VASTRA_API std::int64_t LocalOffset(std::int64_t moment);

// The same for many moments. Asks the system once for each quarter of an hour, because zones change their
// clocks at its ends; within a quarter that does have a change it asks for each moment.
class VASTRA_API CLocalOffset {
 public:
  std::int64_t At(std::int64_t moment) {
    const std::int64_t quarter = moment / kQuarter - (moment % kQuarter < 0);
    if (quarter != m_quarter) SetQuarter(quarter);
    return m_isConstant ? m_offset : LocalOffset(moment);
  }

 private:
  static constexpr std::int64_t kQuarter = 900;  // seconds
  void SetQuarter(std::int64_t quarter);

  std::int64_t m_quarter = INT64_MIN;
  std::int64_t m_offset = 0;
  bool m_isConstant = false;
};

// The moment at which a local clock shows shown, which counts the seconds of the clock since 1970-01-01
// 00:00:00. Of a time that the clock shows twice, the first moment. A time that the clock leaves out, when
// summer time begins, counts on from the time before the change.
VASTRA_API std::int64_t MomentOfLocal(std::int64_t shown);

}  // namespace vastra
