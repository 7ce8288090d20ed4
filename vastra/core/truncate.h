// TruncateToInt: converts a value to a signed 32-bit integer. Used by the bit operators of equations, for
// flags and for names of logs.
#pragma once

#include <cstdint>

#ifdef __x86_64__
#include <emmintrin.h>
#endif

namespace vastra {

// Rounds towards zero: 0.9 becomes 0, -1.7 becomes -1. Of an integer of more than 32 bits the low 32 bits
// count, so that an unsigned 32-bit word keeps its bits. NaN, infinities and values from 2^63 on become 0, so
// that a flag without a defined value is off.
inline int TruncateToInt(double value) {
#ifdef __x86_64__
  // One instruction; it returns -2^63 for a value that does not fit 64 bits.
  const std::int64_t whole = _mm_cvttsd_si64(_mm_set_sd(value));
#else
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  const std::int64_t whole = value > -kLimit && value < kLimit ? static_cast<std::int64_t>(value) : 0;
#endif
  return static_cast<int>(static_cast<std::uint32_t>(whole));
}

}  // namespace vastra
