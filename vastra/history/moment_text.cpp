#include "vastra/history/moment_text.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vastra {
namespace {

std::int64_t FloorDivide(std::int64_t number, std::int64_t by) { return number / by - (number % by < 0); }

// Always three digits, after a point.
char* PutMilliseconds(char* to, unsigned n) {
  to[0] = '.';
  to[1] = static_cast<char>('0' + n / 100);
  to[2] = static_cast<char>('0' + n / 10 % 10);
  to[3] = static_cast<char>('0' + n % 10);
  return to + 4;
}

}  // namespace

char* CMomentText::Put(char* to, CMoment moment) {
  if (m_form == ETimeForm::seconds) return PutSeconds(to, moment);
  const std::int64_t offset = OffsetAt(FloorDivide(moment, 1000));
  const CMoment shown = moment + offset * 1000;
  const std::int64_t minute = FloorDivide(shown, 60'000);
  if (minute != m_minute || offset != m_shownOffset) SetMinute(minute, offset);
  const auto rest = static_cast<unsigned>(shown - minute * 60'000);
  std::memcpy(to, m_start, kStartSize);
  to[kStartSize] = static_cast<char>('0' + rest / 10'000);
  to[kStartSize + 1] = static_cast<char>('0' + rest / 1000 % 10);
  to = PutMilliseconds(to + kStartSize + 2, rest % 1000);
  if (m_form != ETimeForm::iso) return to;
  std::memcpy(to, m_end, 6);
  return to + 6;
}

// A moment before 1970 has the sign before the whole number.
char* CMomentText::PutSeconds(char* to, CMoment moment) const {
  if (moment < 0) *to++ = '-';
  const std::int64_t size = std::abs(moment);
  to = std::to_chars(to, to + kMaxMomentText / 2, size / 1000).ptr;
  return PutMilliseconds(to, static_cast<unsigned>(size % 1000));
}

// An offset of RFC 3339 has whole minutes: the clock that is shown has the same ones, so that the text is
// exact in a zone of local mean time, too.
std::int64_t CMomentText::OffsetAt(std::int64_t seconds) {
  if (m_form == ETimeForm::utc) return 0;
  const std::int64_t offset = m_local.At(seconds);
  return m_form == ETimeForm::iso ? offset / 60 * 60 : offset;
}

void CMomentText::SetMinute(std::int64_t minute, std::int64_t offset) {
  using namespace std::chrono;
  const sys_seconds start{minutes(minute)};
  const year_month_day date(floor<days>(start));
  const hh_mm_ss clock(start - floor<days>(start));
  std::snprintf(m_start, sizeof m_start, "%04d-%02u-%02u%c%02d:%02d:", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                m_form == ETimeForm::iso ? 'T' : ' ', static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()));
  const auto ahead = static_cast<int>(std::abs(offset) / 60);
  std::snprintf(m_end, sizeof m_end, "%c%02d:%02d", offset < 0 ? '-' : '+', ahead / 60, ahead % 60);
  m_minute = minute;
  m_shownOffset = offset;
}

}  // namespace vastra
