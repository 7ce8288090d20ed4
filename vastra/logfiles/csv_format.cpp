#include "vastra/logfiles/csv_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>

namespace vastra {
namespace {

constexpr std::size_t kWriteSize = std::size_t{64} * 1024;  // bytes of text for one write to a file
constexpr std::uint32_t kValuesAtATime = 1024;              // values for which memory is reserved at a time
constexpr std::int64_t kQuarter = 900;                      // seconds

// The texts of 0 to 999 with leading zeros, the first digit in the lowest byte; the fourth byte is 0. The
// additional entry allows reading four bytes from the middle of the last text.
struct CThreeDigits {
  constexpr CThreeDigits() {
    for (std::uint32_t n = 0; n < 1000; ++n)
      m_text[n] = '0' + n / 100 + ('0' + n / 10 % 10) * 0x100 + ('0' + n % 10) * 0x10000;
  }
  std::array<std::uint32_t, 1001> m_text = {};
};
constexpr CThreeDigits kDigits;
static_assert(std::endian::native == std::endian::little);

// Always three digits. Writes one byte more than it returns.
char* PutThree(char* to, std::uint32_t n) {
  std::memcpy(to, &kDigits.m_text[n], 4);
  return to + 3;
}

// A number below 1000 without leading zeros. Writes up to three bytes more than it returns.
char* PutShort(char* to, std::uint32_t n) {
  const std::size_t zeros = static_cast<std::size_t>(n < 100) + static_cast<std::size_t>(n < 10);
  const std::uint32_t text = kDigits.m_text[n] >> 8 * zeros;
  std::memcpy(to, &text, 4);
  return to + 3 - zeros;
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

// whole.decimals, with six decimals and a comma. One store writes the last eight bytes.
inline char* PutFixed(char* to, std::uint32_t whole, std::uint32_t decimals) {
  to = PutWhole(to, whole);
  const std::uint64_t text = std::uint64_t{'.'} | std::uint64_t{kDigits.m_text[decimals / 1000]} << 8 |
                             std::uint64_t{kDigits.m_text[decimals % 1000]} << 32 | std::uint64_t{','} << 56;
  std::memcpy(to, &text, 8);
  return to + 8;
}

// mantissa x 2^-shift. The product of its fraction and a million is exact; shifting rounds it to the nearest
// value, ties to even.
inline char* PutFraction(char* to, std::uint32_t mantissa, int shift) {
  if (shift > 44) return PutFixed(to, 0, 0);  // below half a millionth
  const std::uint64_t one = std::uint64_t{1} << shift;
  const std::uint64_t exact = (mantissa & (one - 1)) * 1'000'000;
  auto whole = static_cast<std::uint32_t>(std::uint64_t{mantissa} >> shift);
  auto decimals = static_cast<std::uint32_t>((exact + (one / 2 - 1) + (exact >> shift & 1)) >> shift);
  if (decimals == 1'000'000) ++whole, decimals = 0;
  return PutFixed(to, whole, decimals);
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

inline char* PutValue(char* to, float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const std::uint32_t fraction = bits & 0x7FFFFF;
  const int exponent = static_cast<int>(bits >> 23 & 0xFF);
  *to = '-';
  to += bits >> 31;
  if (exponent == 0xFF) return PutText(to, fraction ? "nan," : "inf,");
  const std::uint32_t mantissa = exponent ? fraction | 0x800000 : fraction;
  const int shift = std::max(exponent, 1) - 150;
  return shift < 0 ? PutFraction(to, mantissa, -shift) : PutLarge(to, mantissa, shift);
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
