// The bytes of a binary log (.rph, .rpd): a head, all value records, all times and a trailer.
// docs/file-formats.md describes each field. CLogWriter and CLogReader use these definitions, and
// CSampleStore keeps its samples in this form.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vastra {

static_assert(std::endian::native == std::endian::little, "a log has the byte order of memory");

// The fixed start of a log, in memory as in the file. An empty text, the names and the number of samples
// follow.
struct CLogStart {
  static constexpr std::uint32_t kMagic = 0x2C0F0781;

  std::uint32_t m_magic = kMagic;
  std::uint32_t m_reserved1 = 0;
  std::int32_t m_firstTime = 0;  // seconds, of the first sample; determines the order of a replay
  std::int32_t m_lastTime = 0;   // seconds, of the last sample
  std::uint32_t m_reserved2 = 0;
};
static_assert(sizeof(CLogStart) == 20);

using CLogTrailer = std::uint32_t;  // 0

// A count has 2 bytes, or 6 from kLongCount on: the 2 bytes of kLongCount, then the value.
constexpr std::uint16_t kLongCount = 0xFFFF;
constexpr std::size_t kShortCountSize = 2, kLongCountSize = 6;

constexpr std::size_t SizeOfCount(std::uint32_t count) {
  return count < kLongCount ? kShortCountSize : kLongCountSize;
}

// Puts count at to and returns the place after it.
inline char* PutCount(char* to, std::uint32_t count) {
  const auto low = static_cast<std::uint16_t>(count < kLongCount ? count : kLongCount);
  std::memcpy(to, &low, sizeof low);
  if (low == kLongCount) std::memcpy(to + sizeof low, &count, sizeof count);
  return to + SizeOfCount(count);
}

// Gets the count at from, which must be complete, and returns the place after it.
inline const char* GetCountAt(const char* from, std::uint32_t& count) {
  std::uint16_t low;
  std::memcpy(&low, from, sizeof low);
  count = low;
  if (low != kLongCount) return from + kShortCountSize;
  std::memcpy(&count, from + kShortCountSize, sizeof count);
  return from + kLongCountSize;
}

}  // namespace vastra
