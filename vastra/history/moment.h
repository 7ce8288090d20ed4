// Moments: the times of samples as one number, and ranges of them. The history of logs orders rows by their
// moments and compares nothing else of a time record.
#pragma once

#include <cstdint>

#include "vastra/platform/time.h"

namespace vastra {

// Milliseconds since 1970-01-01 00:00:00 UTC.
using CMoment = std::int64_t;

// All moments of time records are from kFirstMoment on and before kEndMoment.
inline constexpr CMoment kFirstMoment = std::int64_t{INT32_MIN} * 1000;
inline constexpr CMoment kEndMoment = (std::int64_t{INT32_MAX} + 1) * 1000 + UINT16_MAX;

inline CMoment MomentOf(const _timeb& time) { return std::int64_t{time.time} * 1000 + time.millitm; }

// The moments from from on and before to.
struct CMomentRange {
  CMoment from = kFirstMoment;
  CMoment to = kEndMoment;

  bool operator==(const CMomentRange&) const = default;
  bool Has(CMoment moment) const { return moment >= from && moment < to; }
};

}  // namespace vastra
