#include "vastra/history/float_text.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

// The digits of a float: with the three numbers between which all numbers read back to it (half the way to
// its neighbours, and itself), scaled by a power of ten so that they have one digit more than is needed. The
// scaled numbers are rounded to odd, which keeps the result of each comparison that follows.
namespace vastra {
namespace {

constexpr int kFirstPower = -31;
// The upper 64 bits of 10^(i + kFirstPower), rounded up.
constexpr std::uint64_t kPowersOfTen[] = {
    0x81CEB32C4B43FCF5, 0xA2425FF75E14FC32, 0xCAD2F7F5359A3B3F, 0xFD87B5F28300CA0E, 0x9E74D1B791E07E49,
    0xC612062576589DDB, 0xF79687AED3EEC552, 0x9ABE14CD44753B53, 0xC16D9A0095928A28, 0xF1C90080BAF72CB2,
    0x971DA05074DA7BEF, 0xBCE5086492111AEB, 0xEC1E4A7DB69561A6, 0x9392EE8E921D5D08, 0xB877AA3236A4B44A,
    0xE69594BEC44DE15C, 0x901D7CF73AB0ACDA, 0xB424DC35095CD810, 0xE12E13424BB40E14, 0x8CBCCC096F5088CC,
    0xAFEBFF0BCB24AAFF, 0xDBE6FECEBDEDD5BF, 0x89705F4136B4A598, 0xABCC77118461CEFD, 0xD6BF94D5E57A42BD,
    0x8637BD05AF6C69B6, 0xA7C5AC471B478424, 0xD1B71758E219652C, 0x83126E978D4FDF3C, 0xA3D70A3D70A3D70B,
    0xCCCCCCCCCCCCCCCD, 0x8000000000000000, 0xA000000000000000, 0xC800000000000000, 0xFA00000000000000,
    0x9C40000000000000, 0xC350000000000000, 0xF424000000000000, 0x9896800000000000, 0xBEBC200000000000,
    0xEE6B280000000000, 0x9502F90000000000, 0xBA43B74000000000, 0xE8D4A51000000000, 0x9184E72A00000000,
    0xB5E620F480000000, 0xE35FA931A0000000, 0x8E1BC9BF04000000, 0xB1A2BC2EC5000000, 0xDE0B6B3A76400000,
    0x8AC7230489E80000, 0xAD78EBC5AC620000, 0xD8D726B7177A8000, 0x878678326EAC9000, 0xA968163F0A57B400,
    0xD3C21BCECCEDA100, 0x84595161401484A0, 0xA56FA5B99019A5C8, 0xCECB8F27F4200F3A, 0x813F3978F8940985,
    0xA18F07D736B90BE6, 0xC9F2C9CD04674EDF, 0xFC6F7C4045812297, 0x9DC5ADA82B70B59E, 0xC5371912364CE306,
    0xF684DF56C3E01BC7, 0x9A130B963A6C115D, 0xC097CE7BC90715B4, 0xF0BDC21ABB48DB21, 0x96769950B50D88F5,
    0xBC143FA4E250EB32, 0xEB194F8E1AE525FE, 0x92EFD1B8D0CF37BF, 0xB7ABC627050305AE, 0xE596B7B0C643C71A,
    0x8F7E32CE7BEA5C70, 0xB35DBF821AE4F38C,
};

// value = digits * 10^exponent. At most nine digits.
struct CDecimal {
  std::uint32_t digits;
  int exponent;
};

// floor(exponent * log10(2)), and with isIrregular floor(exponent * log10(2) + log10(3 / 4)).
constexpr int TensOfTwos(int exponent, bool isIrregular) {
  return (exponent * 1262611 - (isIrregular ? 524031 : 0)) >> 22;
}
// floor(exponent * log2(10)).
constexpr int TwosOfTens(int exponent) { return (exponent * 1741647) >> 19; }

// The product of power and number, without its lowest 64 bits; the last bit is set if any of those is.
inline std::uint32_t RoundedToOdd(std::uint64_t power, std::uint32_t number) {
  const std::uint64_t low = (power & 0xFFFFFFFF) * number;
  const std::uint64_t product = (power >> 32) * number + (low >> 32);
  return static_cast<std::uint32_t>(product >> 32) | ((product & 0xFFFFFFFF) > 1);
}

// bits: of a positive finite float.
CDecimal ShortestDecimal(std::uint32_t bits) {
  const std::uint32_t fraction = bits & 0x7FFFFF, biased = bits >> 23;
  const std::uint32_t mantissa = biased ? fraction | 0x800000 : fraction;
  const int twos = biased ? static_cast<int>(biased) - 150 : -149;
  const bool isIrregular = fraction == 0 && biased > 1;  // the neighbour below is nearer than that above
  const int tens = TensOfTwos(twos, isIrregular);
  const int shift = twos + TwosOfTens(-tens) + 1;
  const std::uint64_t power = kPowersOfTen[-tens - kFirstPower];
  const std::uint32_t below = RoundedToOdd(power, (4 * mantissa - 2 + isIrregular) << shift);
  const std::uint32_t scaled = RoundedToOdd(power, 4 * mantissa << shift);
  const std::uint32_t above = RoundedToOdd(power, (4 * mantissa + 2) << shift);
  // A tie reads back to the float with the even mantissa.
  const std::uint32_t isOdd = mantissa & 1, lowest = below + isOdd, highest = above - isOdd;
  const std::uint32_t whole = scaled / 4, shorter = scaled / 40;
  const bool isShorter = lowest <= 40 * shorter, isShorterAbove = 40 * shorter + 40 <= highest;
  const bool isWhole = lowest <= 4 * whole, isWholeAbove = 4 * whole + 4 <= highest;
  const std::uint32_t middle = 4 * whole + 2;
  const bool isNearerAbove = scaled > middle || (scaled == middle && (whole & 1));
  const bool roundsUp = isWhole != isWholeAbove ? isWholeAbove : isNearerAbove;
  const bool hasShorter = isShorter != isShorterAbove && whole >= 10;
  return {hasShorter ? shorter + isShorterAbove : whole + roundsUp, tens + hasShorter};
}

constexpr std::uint32_t kTens[] = {1,       10,        100,        1000,        10'000,
                                   100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

// The texts of the numbers below 1000, the first digit in the lowest byte: as three digits, and without zeros
// before them, with the number of digits in the highest byte.
struct CTriples {
  constexpr CTriples() {
    for (std::uint32_t n = 0; n < 1000; ++n) {
      const std::uint32_t zeros = n < 10 ? 2 : n < 100 ? 1 : 0;
      m_text[n] = '0' + n / 100 + ('0' + n / 10 % 10) * 0x100 + ('0' + n % 10) * 0x10000;
      m_short[n] = m_text[n] >> 8 * zeros | (3 - zeros) << 24;
    }
  }
  std::array<std::uint32_t, 1000> m_text = {}, m_short = {};
};
constexpr CTriples kTriples;
static_assert(std::endian::native == std::endian::little);

// The text of a number below 10^8, with zeros before it; the first digit is in the lowest byte.
inline std::uint64_t EightDigits(std::uint32_t number) {
  return kTriples.m_text[number / kTens[6]] >> 8 |
         std::uint64_t{kTriples.m_text[number / 1000 % 1000]} << 16 |
         std::uint64_t{kTriples.m_text[number % 1000]} << 40;
}

// How many of eight digits are left without the zeros at their end.
inline unsigned CountWithoutZeros(std::uint64_t digits) {
  return 8 - static_cast<unsigned>(std::countl_zero(digits ^ 0x3030303030303030)) / 8;
}

// A number below 1000 without zeros before it. Writes up to three bytes more than it returns.
inline char* PutShort(char* to, std::uint32_t number) {
  const std::uint32_t text = kTriples.m_short[number];
  std::memcpy(to, &text, sizeof text);
  return to + (text >> 24);
}

// The same for a number of more digits.
[[gnu::noinline]] char* PutLong(char* to, std::uint32_t number) {
  const std::uint32_t thousands = number / 1000;
  to = thousands < 1000 ? PutShort(to, thousands) : PutLong(to, thousands);
  std::memcpy(to, &kTriples.m_text[number % 1000], 4);
  return to + 3;
}

// Of a number from 1 to 10^9 - 1.
int CountDigits(std::uint32_t number) {
  const auto most = static_cast<std::uint32_t>(std::bit_width(number)) * 1233 >> 12;
  return static_cast<int>(most + (number >= kTens[most]));
}

// The digits of a decimal as text: the first one, and eight more, of which the last ones may be zeros. They
// stay in registers: to load again what was just stored in pieces takes longer than the rest.
class CDigitText {
 public:
  explicit CDigitText(std::uint32_t digits) : m_count(CountDigits(digits)), m_whole(m_count) {
    digits *= kTens[9 - m_count];
    m_first = static_cast<char>('0' + digits / kTens[8]);
    m_rest = EightDigits(digits % kTens[8]);
    m_count = 1 + static_cast<int>(CountWithoutZeros(m_rest));
  }

  int Whole() const { return m_whole; }  // digits of the number as it was
  int Count() const { return m_count; }  // digits without the zeros at the end
  // Write nine bytes, the digits from the first or from a later one on.
  void Put(char* to) const {
    *to = m_first;
    PutFrom(1, to + 1);
  }
  void PutFrom(int index, char* to) const {
    const std::uint64_t text = m_rest >> 8 * (index - 1);
    std::memcpy(to, &text, sizeof text);
  }

 private:
  int m_count, m_whole;
  char m_first;
  std::uint64_t m_rest;
};

constexpr int kMostWhole = 12;  // digits before the point
constexpr int kMostZeros = 4;   // after the point

// 0.0012: digits after zeros.
char* PutSmall(char* to, const CDigitText& digits, int zeros) {
  std::memset(to, '0', 2 + kMostZeros);
  to[1] = '.';
  digits.Put(to + 2 + zeros);
  return to + 2 + zeros + digits.Count();
}

// 1200: digits before zeros.
char* PutWithZeros(char* to, const CDigitText& digits, int whole) {
  std::memset(to, '0', kMostWhole);
  digits.Put(to);
  return to + whole;
}

char* PutWithPoint(char* to, const CDigitText& digits, int whole) {
  digits.Put(to);
  to[whole] = '.';
  digits.PutFrom(whole, to + whole + 1);
  return to + digits.Count() + 1;
}

// 1.2e+20
char* PutWithExponent(char* to, const CDigitText& digits, int exponent) {
  to = digits.Count() > 1 ? PutWithPoint(to, digits, 1) : PutWithZeros(to, digits, 1);
  const int size = exponent < 0 ? -exponent : exponent;
  to[0] = 'e';
  to[1] = exponent < 0 ? '-' : '+';
  to[2] = static_cast<char>('0' + size / 10);
  to[3] = static_cast<char>('0' + size % 10);
  return to + 4;
}

[[gnu::noinline]] char* PutDecimal(char* to, const CDecimal& decimal) {
  const CDigitText digits(decimal.digits);
  const int whole = digits.Whole() + decimal.exponent;  // digits before the point
  if (whole > kMostWhole || whole < -kMostZeros) return PutWithExponent(to, digits, whole - 1);
  if (whole <= 0) return PutSmall(to, digits, -whole);
  return whole < digits.Count() ? PutWithPoint(to, digits, whole) : PutWithZeros(to, digits, whole);
}

// Floats from 0.125 to 2^23, whose decimals and their limits are exact as doubles. For each exponent: how
// many decimals tell all floats apart, as powers of ten, and half the distance of two floats in units of the
// last decimal.
constexpr std::uint32_t kFirstUsual = 124, kLastUsual = 149;
struct CUsualFloats {
  constexpr CUsualFloats() {
    double distance = 0x1p-26;
    for (auto& known : m_known) {
      int decimals = 0;
      while (distance * kTens[decimals] < 1) ++decimals;
      known.scale = kTens[decimals];
      known.rest = kTens[8 - decimals];
      known.half[0] = distance * known.scale / 2;
      known.half[1] = known.half[0] * (1 - 0x1p-52);
      distance *= 2;
    }
  }
  struct {
    double scale;
    double half[2];      // the second one is just below the first one
    std::uint32_t rest;  // scale * rest is 10^8
  } m_known[kLastUsual - kFirstUsual + 1] = {};
};
constexpr CUsualFloats kUsualFloats;

// The nearest whole number, of two the even one. The sum has no bits for a fraction.
inline std::uint32_t Nearest(double number) {
  return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(number + 0x1p52));
}

// Puts the decimals of value, whose whole part is at to already. Takes one decimal less if that still reads
// back to value; from half the way to a neighbour a text reads back to the float with the even mantissa.
// Random values would make each branch here a wrong guess of the processor.
inline char* PutDecimals(char* to, float value, std::int32_t whole) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const auto& known = kUsualFloats.m_known[(bits >> 23) - kFirstUsual];
  const double decimals = (double{value} - whole) * known.scale;
  const std::uint32_t all = Nearest(decimals), shorter = Nearest(decimals * 0.1) * 10;
  const double away = std::fabs(static_cast<std::int32_t>(shorter) - decimals);
  const std::uint32_t isShorter = away <= known.half[bits & 1];
  const std::uint32_t shown = all ^ ((all ^ shorter) & (0 - isShorter));
  const std::uint64_t text = EightDigits(shown * known.rest);
  const unsigned count = CountWithoutZeros(text);
  *to = '.';
  std::memcpy(to + 1, &text, sizeof text);
  return count ? to + 1 + count : to;
}

template <class TNumber>
char* PutSpecial(char* to, TNumber value) {
  const std::string_view text = std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf";
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// The rest of PutShortest, in functions of their own, so that it needs no frame on the stack.
[[gnu::noinline]] char* PutThousands(char* to, float value, std::int32_t whole) {
  return PutDecimals(PutLong(to, static_cast<std::uint32_t>(whole)), value, whole);
}

[[gnu::noinline]] char* PutUnusual(char* to, float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value), size = bits & 0x7FFFFFFF;
  if (size >= 0x7F800000) return PutSpecial(to, value);
  *to = '-';
  to += bits >> 31;
  if (size) return PutDecimal(to, ShortestDecimal(size));
  *to = '0';
  return to + 1;
}

}  // namespace

char* PutShortest(char* to, float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value), size = bits & 0x7FFFFFFF;
  if ((size >> 23) - kFirstUsual > kLastUsual - kFirstUsual) return PutUnusual(to, value);
  *to = '-';
  to += bits >> 31;
  const auto positive = std::bit_cast<float>(size);
  const auto whole = static_cast<std::int32_t>(positive);
  if (whole >= 1000) return PutThousands(to, positive, whole);
  return PutDecimals(PutShort(to, static_cast<std::uint32_t>(whole)), positive, whole);
}

char* PutShortest(char* to, double value) {
  if (!std::isfinite(value)) return PutSpecial(to, value);
  const double size = std::fabs(value);
  const bool isPlain = size == 0 || (size >= 1e-5 && size < 1e12);
  const auto form = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
  return std::to_chars(to, to + kMaxShortestText, value, form).ptr;
}

}  // namespace vastra
