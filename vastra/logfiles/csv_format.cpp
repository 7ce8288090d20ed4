#include "vastra/logfiles/csv_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cstdio>

namespace vastra {
namespace {

constexpr std::size_t kWriteSize = std::size_t{64} * 1024;  // bytes of text for one write to a file
constexpr std::uint32_t kValuesAtATime = 1024;              // values for which memory is reserved at a time
constexpr std::int64_t kQuarter = 900;                      // seconds

// The texts of 0 to 999 in four bytes, the first in the lowest: three digits and a comma; a point and three
// digits; the digits without leading zeros, and their number in the fourth byte.
struct CDigits {
  constexpr CDigits() {
    for (std::uint32_t n = 0; n < 1000; ++n) {
      const std::uint32_t digits = '0' + n / 100 + ('0' + n / 10 % 10) * 0x100 + ('0' + n % 10) * 0x10000;
      const std::uint32_t zeros = n < 10 ? 2 : n < 100 ? 1 : 0;
      m_three[n] = digits | std::uint32_t{','} << 24;
      m_point[n] = '.' | digits << 8;
      m_short[n] = digits >> 8 * zeros | (3 - zeros) << 24;
    }
  }
  std::array<std::uint32_t, 1000> m_three = {}, m_point = {}, m_short = {};
};
constexpr CDigits kDigits;
static_assert(std::endian::native == std::endian::little);

// Always three digits. Writes one byte more than it returns.
inline char* PutThree(char* to, std::uint32_t n) {
  std::memcpy(to, &kDigits.m_three[n], 4);
  return to + 3;
}

// A number below 1000 without leading zeros. Writes up to three bytes more than it returns.
inline char* PutShort(char* to, std::uint32_t n) {
  const std::uint32_t text = kDigits.m_short[n];
  std::memcpy(to, &text, 4);
  return to + (text >> 24);
}

char* PutTwo(char* to, unsigned n) {
  to[0] = static_cast<char>('0' + n / 10);
  to[1] = static_cast<char>('0' + n % 10);
  return to + 2;
}

char* PutText(char* to, std::string_view text) { return std::copy(text.begin(), text.end(), to); }

// A number below 10^9 without leading zeros. Writes up to three bytes more than it returns.
inline char* PutWhole(char* to, std::uint32_t n) {
  if (n < 1000) return PutShort(to, n);
  const std::uint32_t thousands = n / 1000;
  to =
      thousands < 1000 ? PutShort(to, thousands) : PutThree(PutShort(to, thousands / 1000), thousands % 1000);
  return PutThree(to, n % 1000);
}

// whole.decimals, with six decimals and a comma. One store writes the last eight bytes: a compiler joins two
// stores of four in a vector register, which takes longer.
inline char* PutFixed(char* to, std::uint32_t whole, std::uint32_t decimals) {
  to = PutWhole(to, whole);
  const std::uint64_t text =
      kDigits.m_point[decimals / 1000] | std::uint64_t{kDigits.m_three[decimals % 1000]} << 32;
  std::memcpy(to, &text, sizeof text);
  return to + 8;
}

// mantissa x 2^shift, below 2^128: in parts below 10^9, the lowest first.
char* PutLarge(char* to, std::uint32_t mantissa, int shift) {
  constexpr std::uint32_t kPart = 1'000'000'000;
  std::uint32_t parts[5] = {mantissa};
  for (; shift > 0; shift -= 29) {
    std::uint64_t carry = 0;
    for (std::uint32_t& part : parts) {
      carry += std::uint64_t{part} << std::min(shift, 29);
      part = static_cast<std::uint32_t>(carry % kPart);
      carry /= kPart;
    }
  }
  int place = 4;
  while (place > 0 && parts[place] == 0) --place;
  to = PutWhole(to, parts[place]);
  while (--place >= 0)
    for (std::uint32_t unit = kPart / 1000; unit; unit /= 1000) to = PutThree(to, parts[place] / unit % 1000);
  return PutText(to, ".000000,");
}

// A number of at least 10^9, an infinity or a NaN; bits are those of the float without its sign.
char* PutRare(char* to, std::uint32_t bits) {
  const std::uint32_t fraction = bits & 0x7FFFFF, exponent = bits >> 23;
  if (exponent == 0xFF) return PutText(to, fraction ? "nan," : "inf,");
  return PutLarge(to, fraction | 0x800000, static_cast<int>(exponent) - 150);
}

// The fraction of a float and its product with a million are exact in double. The sum with 2^52 rounds the
// product to the nearest integer, ties to even, and leaves that in the lowest bits.
inline char* PutValue(char* to, float value) {
  static_assert(FLT_EVAL_METHOD == 0);
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const auto size = std::bit_cast<float>(bits & 0x7FFFFFFF);
  *to = '-';
  to += bits >> 31;
  if (!(size < 1e9f)) return PutRare(to, bits & 0x7FFFFFFF);
  auto whole = static_cast<std::int32_t>(size);
  const double millionths = (double{size} - whole) * 1e6;
  auto decimals = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(millionths + 0x1p52));
  if (decimals == 1'000'000) ++whole, decimals = 0;
  return PutFixed(to, static_cast<std::uint32_t>(whole), decimals);
}

}  // namespace

char* PutFloat(char* to, float value) { return PutValue(to, value); }

char* CTimeText::Put(char* to, const _timeb& time) {
  const std::int64_t seconds = time.time;
  const std::int64_t quarter = seconds / kQuarter - (seconds % kQuarter < 0);
  if (quarter != m_quarter) SetQuarter(quarter);
  if (m_regular) {
    const unsigned second = m_start + static_cast<unsigned>(seconds - quarter * kQuarter);
    PutTwo(m_clock + kClockSize - 5, second / 60);
    PutTwo(m_clock + kClockSize - 2, second % 60);
  } else {
    Compose(seconds);
  }
  std::memcpy(to, m_clock, kClockSize);
  to[kClockSize] = ':';
  to = PutWhole(to + kClockSize + 1, time.millitm);
  std::memcpy(to, m_year, sizeof m_year);
  return to + m_yearSize;
}

void CTimeText::SetQuarter(std::int64_t quarter) {
  const std::tm first = CTime(quarter * kQuarter).GetLocalTm();
  const std::tm last = CTime(quarter * kQuarter + kQuarter - 1).GetLocalTm();
  m_quarter = quarter;
  m_start = static_cast<unsigned>(first.tm_min * 60 + first.tm_sec);
  m_regular = first.tm_mday == last.tm_mday && first.tm_hour == last.tm_hour &&
              first.tm_min * 60 + first.tm_sec + kQuarter - 1 == last.tm_min * 60 + last.tm_sec;
  if (m_regular) Compose(quarter * kQuarter);
}

void CTimeText::Compose(std::int64_t seconds) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::tm local = CTime(seconds).GetLocalTm();
  std::snprintf(m_clock, sizeof m_clock, "%s %s %02d %02d:%02d:%02d", kDays[local.tm_wday],
                kMonths[local.tm_mon], local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  m_yearSize = static_cast<std::size_t>(std::snprintf(m_year, sizeof m_year, "  %d,", local.tm_year + 1900));
}

char* CCsvText::Room(std::size_t size, std::size_t bytes) {
  if (m_capacity - size < bytes) {
    const std::size_t capacity = std::max(2 * m_capacity, size + bytes);
    auto grown = std::make_unique_for_overwrite<char[]>(capacity);
    if (size) std::memcpy(grown.get(), m_bytes.get(), size);
    m_bytes = std::move(grown);
    m_capacity = capacity;
  }
  return m_bytes.get() + size;
}

void CCsvText::FreeMemory() {
  m_bytes.reset();
  m_size = m_capacity = 0;
}

void CCsvText::AddNames(const CStringArray& names) {
  std::string line = "TimeStamp,";
  for (const CString& name : names) line.append(name.View()).append(",");
  line += '\n';
  PutText(Room(m_size, line.size()), line);
  m_size += line.size();
}

void CCsvText::AddSample(const CSampleRecord& sample) {
  std::size_t size = m_size;
  const auto end = [&](const char* at) { size = static_cast<std::size_t>(at - m_bytes.get()); };
  end(m_times.Put(Room(size, kMaxTimeText), sample.m_time));
  for (std::uint32_t i = 0; i < sample.m_count;) {
    const std::uint32_t stop = std::min(sample.m_count, i + kValuesAtATime);
    char* to = Room(size, (stop - i) * kMaxFloatText);
    for (; i < stop; ++i) to = PutValue(to, sample.Value(i));
    end(to);
  }
  *Room(size, 1) = '\n';
  m_size = size + 1;
}

void WriteCsv(CFile& file, const CStringArray& names, const CSampleStore& samples, CCsvText& text) {
  CSampleSpans spans;
  CSampleStore::CPlace from = samples.GetHeadPlace();
  samples.AddSpans(from, spans);
  WriteCsv(file, names, std::move(spans), text);
}

void WriteCsv(CFile& file, const CStringArray& names, CSampleSpans samples, CCsvText& text) {
  const auto flush = [&] {
    file.Write(text.View().data(), text.View().size());
    text.RemoveAll();
  };
  text.RemoveAll();
  text.AddNames(names);
  CSampleRecord sample;
  for (CSampleSpan& span : samples)
    while (span.GetNext(sample)) {
      text.AddSample(sample);
      if (text.View().size() >= kWriteSize) flush();
    }
  flush();
}

}  // namespace vastra
