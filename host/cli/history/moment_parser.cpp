#include "host/cli/history/moment_parser.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <string_view>

#include "vastra/history/local_time.h"

namespace vastra {
namespace {

constexpr double kLongestDuration = 36525.0 * 86400 * 1000;  // milliseconds

// Milliseconds of a unit; 0 if c is none.
std::int64_t UnitOf(char c) {
  constexpr struct {
    char name;
    std::int64_t seconds;
  } kUnits[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}, {'w', 604800}};
  for (const auto& unit : kUnits)
    if (unit.name == c) return unit.seconds * 1000;
  return 0;
}

// What is left of a text that is parsed.
class CTimeCursor {
 public:
  explicit CTimeCursor(std::string_view rest) : m_rest(rest) {}

  bool IsAtEnd() const { return m_rest.empty(); }
  // One of several characters.
  bool Skip(std::string_view characters) {
    if (m_rest.empty() || characters.find(m_rest.front()) == characters.npos) return false;
    m_rest.remove_prefix(1);
    return true;
  }
  // Exactly so many digits, a number from 0 to most.
  bool Number(std::size_t digits, int most, int& number) {
    number = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      if (i >= m_rest.size() || m_rest[i] < '0' || m_rest[i] > '9') return false;
      number = number * 10 + (m_rest[i] - '0');
    }
    m_rest.remove_prefix(digits);
    return number <= most;
  }
  // The digits after a point, in milliseconds, rounded up; at least one digit.
  bool Fraction(int& milliseconds) {
    milliseconds = 0;
    bool hasMore = false;
    std::size_t digits = 0;
    for (; digits < m_rest.size() && m_rest[digits] >= '0' && m_rest[digits] <= '9'; ++digits) {
      const int digit = m_rest[digits] - '0';
      constexpr int kUnits[] = {100, 10, 1};
      if (digits < 3)
        milliseconds += digit * kUnits[digits];
      else
        hasMore = hasMore || digit != 0;
    }
    m_rest.remove_prefix(digits);
    milliseconds += hasMore;
    return digits > 0;
  }

 private:
  std::string_view m_rest;
};

bool ReadDay(CTimeCursor& cursor, std::int64_t& seconds) {
  int year, month, day;
  if (!cursor.Number(4, 9999, year) || !cursor.Skip("-") || !cursor.Number(2, 12, month) ||
      !cursor.Skip("-") || !cursor.Number(2, 31, day))
    return false;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok()) return false;
  seconds = std::chrono::seconds(std::chrono::sys_days(date).time_since_epoch()).count();
  return true;
}

// Adds hours, minutes and perhaps seconds. A leap second, 60, is the second after it.
bool ReadClock(CTimeCursor& cursor, std::int64_t& seconds, int& milliseconds) {
  int hour, minute, second = 0;
  if (!cursor.Number(2, 23, hour) || !cursor.Skip(":") || !cursor.Number(2, 59, minute)) return false;
  if (cursor.Skip(":")) {
    if (!cursor.Number(2, 60, second)) return false;
    if (cursor.Skip(".") && !cursor.Fraction(milliseconds)) return false;
  }
  seconds += hour * 3600 + minute * 60 + second;
  return true;
}

// Makes the seconds that a clock shows those of UTC, by the offset after them, or else by the local zone.
bool ReadOffset(CTimeCursor& cursor, std::int64_t& seconds) {
  if (cursor.IsAtEnd()) return seconds = MomentOfLocal(seconds), true;
  if (cursor.Skip("Zz")) return true;
  const bool isEast = cursor.Skip("+");
  int hours, minutes;
  if ((!isEast && !cursor.Skip("-")) || !cursor.Number(2, 23, hours) || !cursor.Skip(":") ||
      !cursor.Number(2, 59, minutes))
    return false;
  const std::int64_t offset = hours * 3600 + minutes * 60;
  seconds -= isEast ? offset : -offset;
  return true;
}

std::optional<CTypedMoment> ParseStamp(std::string_view text) {
  CTimeCursor cursor(text);
  std::int64_t seconds;
  int milliseconds = 0;
  if (!ReadDay(cursor, seconds)) return {};
  const bool hasClock = cursor.Skip("Tt ");
  if (hasClock && !ReadClock(cursor, seconds, milliseconds)) return {};
  if ((!hasClock && !cursor.IsAtEnd()) || !ReadOffset(cursor, seconds) || !cursor.IsAtEnd()) return {};
  return CTypedMoment{seconds * 1000 + milliseconds, false};
}

// Such as -7d.
std::optional<CTypedMoment> ParseBefore(std::string_view text, CMoment now) {
  const std::int64_t unit = UnitOf(text.back());
  const char* const end = text.data() + text.size() - 1;
  std::uint32_t count = 0;
  const auto [rest, fault] = std::from_chars(text.data() + 1, end, count);
  if (!unit || rest != end || rest == text.data() + 1) return {};
  if (fault == std::errc::result_out_of_range) count = UINT32_MAX;
  return CTypedMoment{now - count * unit, true};
}

}  // namespace

std::optional<CTypedMoment> ParseMoment(const CString& text, CMoment now) {
  if (text == "now") return CTypedMoment{now, true};
  if (text.GetLength() > 2 && text[0] == '-') return ParseBefore(text.View(), now);
  return ParseStamp(text.View());
}

std::optional<std::int64_t> ParseDuration(const CString& text) {
  if (text.IsEmpty()) return {};
  const std::int64_t named = UnitOf(text[text.GetLength() - 1]);
  const char* const end = text.View().data() + text.GetLength() - (named != 0);
  double number = 0;
  const auto [rest, fault] = std::from_chars(text.View().data(), end, number, std::chars_format::fixed);
  const double milliseconds = number * static_cast<double>(named ? named : 1000);
  if (fault != std::errc() || rest != end || !(milliseconds >= 1 && milliseconds <= kLongestDuration))
    return {};
  return std::llround(milliseconds);
}

}  // namespace vastra
