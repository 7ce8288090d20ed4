// The times and durations that a user types: --from, --to, --step and --gaps.
#pragma once

#include <cstdint>
#include <optional>

#include "vastra/history/moment.h"
#include "vastra/platform/string.h"

namespace vastra {

struct CTypedMoment {
  CMoment moment = 0;
  bool isRelative = false;  // to now
};

// For messages: what ParseMoment and ParseDuration accept.
inline constexpr const char* kMomentForms =
    "a time: 2026-03-01, 2026-03-01T12:00:00, the same with Z or +01:00, -7d (s, m, h, d or w) or now";
inline constexpr const char* kDurationForms =
    "a duration of at least a millisecond: seconds, or a number with s, m, h, d or w, such as 90, 0.5 or 15m";

// A date (local midnight), a date and time, local or with the offset of RFC 3339, a time before now such as
// -7d, or "now". A fraction of a millisecond is rounded up. Empty if text is something else.
std::optional<CTypedMoment> ParseMoment(const CString& text, CMoment now);

// A duration in milliseconds, from 1 to 100 years. Empty if text is something else.
std::optional<std::int64_t> ParseDuration(const CString& text);

}  // namespace vastra
