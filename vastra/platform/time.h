// Points in time: the 12-byte time record of a sample, a count of seconds, and the clock, which a host or a
// test can replace.
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <ctime>

#include "vastra/platform/string.h"

namespace vastra {

// The time stamp of a sample. A log file has the same bytes.
struct _timeb {
  std::int32_t time = 0;      // seconds since 1970-01-01 00:00:00 UTC
  std::uint16_t millitm = 0;  // milliseconds within the second
  std::int16_t timezone = 0;  // minutes west of UTC, without daylight saving
  std::int16_t dstflag = 0;   // non-zero while daylight saving applies
  std::uint16_t padding = 0;  // unused; a replay preserves it

  bool operator==(const _timeb&) const = default;
};
static_assert(sizeof(_timeb) == 12);

// A count of seconds since 1970-01-01 00:00:00 UTC.
class VASTRA_API CTime {
 public:
  CTime() = default;
  explicit CTime(std::int64_t seconds) : m_seconds(seconds) {}
  std::int64_t GetTime() const { return m_seconds; }
  std::tm GetLocalTm() const;
  auto operator<=>(const CTime&) const = default;

 private:
  std::int64_t m_seconds = 0;
};

// The source of the time.
class VASTRA_API CClock {
 public:
  virtual ~CClock() = default;
  virtual _timeb Now() = 0;
};

// Installs clock, which the caller keeps; null installs the system's clock. Returns the previous clock, null
// for the system's. Must not be called while worker threads run.
VASTRA_API CClock* SetClock(CClock* clock);

// The present time, from the installed clock.
VASTRA_API void _ftime(_timeb& now);

// A span of time as "h:mm:ss", for messages.
VASTRA_API CString InHours(std::chrono::steady_clock::duration span);

}  // namespace vastra
