#include "vastra/platform/time.h"

#include <chrono>
#include <utility>

namespace vastra {
namespace {

CClock* g_clock = nullptr;

// The zone fields of a time record. They are valid for a quarter of an hour, because no zone changes its
// clocks in finer steps, and until the process changes its zone.
struct CZone {
  std::int64_t quarter = -1;
  const char* name = nullptr;  // tzset changes the name of the zone or its offset
  long secondsWest = 0;        // without daylight saving
  std::int16_t dst = 0;
};

const CZone& ZoneAt(std::int64_t seconds) {
  thread_local CZone zone;
  const std::int64_t quarter = seconds / 900;
  if (zone.quarter == quarter && zone.name == ::tzname[0] && zone.secondsWest == ::timezone) return zone;
  const std::time_t time = seconds;
  std::tm local = {};
  ::localtime_r(&time, &local);  // sets ::tzname and ::timezone
  zone = {quarter, ::tzname[0], ::timezone, static_cast<std::int16_t>(local.tm_isdst > 0)};
  return zone;
}

_timeb SystemNow() {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  const CZone& zone = ZoneAt(now / 1000);
  _timeb record;
  record.time = static_cast<std::int32_t>(now / 1000);
  record.millitm = static_cast<std::uint16_t>(now % 1000);
  record.timezone = static_cast<std::int16_t>(zone.secondsWest / 60);
  record.dstflag = zone.dst;
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

CString InHours(std::chrono::steady_clock::duration span) {
  const auto seconds = static_cast<long long>(std::chrono::duration_cast<std::chrono::seconds>(span).count());
  CString text;
  text.Format("%lld:%02d:%02d", seconds / 3600, static_cast<int>(seconds / 60 % 60),
              static_cast<int>(seconds % 60));
  return text;
}

void _ftime(_timeb& now) { now = g_clock ? g_clock->Now() : SystemNow(); }

}  // namespace vastra
