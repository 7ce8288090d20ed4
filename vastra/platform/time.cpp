#include "vastra/platform/time.h"

#include <chrono>
#include <utility>

namespace vastra {
namespace {

CClock* g_clock = nullptr;

_timeb SystemNow() {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  const std::time_t seconds = now / 1000;
  std::tm local = {};
  ::localtime_r(&seconds, &local);  // sets ::timezone, the seconds west of UTC without daylight saving
  _timeb record;
  record.time = static_cast<std::int32_t>(seconds);
  record.millitm = static_cast<std::uint16_t>(now % 1000);
  record.timezone = static_cast<std::int16_t>(::timezone / 60);
  record.dstflag = static_cast<std::int16_t>(local.tm_isdst > 0);
  return record;
}

}  // namespace

std::tm CTime::GetLocalTm() const {
  const std::time_t seconds = m_seconds;
  std::tm local = {};
  ::localtime_r(&seconds, &local);
  return local;
}

CClock* SetClock(CClock* clock) { return std::exchange(g_clock, clock); }

void _ftime(_timeb& now) { now = g_clock ? g_clock->Now() : SystemNow(); }

}  // namespace vastra
