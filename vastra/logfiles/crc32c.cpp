#include "vastra/logfiles/crc32c.h"

#include <array>
#include <bit>
#include <cstring>

namespace vastra {
namespace {

static_assert(std::endian::native == std::endian::little, "eight bytes are read as one number");

constexpr std::size_t kSlices = 8;
constexpr std::uint32_t kPolynomial = 0x82F63B78;  // 0x1EDC6F41 with its bits reversed

using CCrcTables = std::array<std::array<std::uint32_t, 256>, kSlices>;

// Entry b of table s is the checksum, without the inversions, of the byte b and s zero bytes after it.
constexpr CCrcTables MakeCrcTables() {
  CCrcTables tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (crc & 1 ? kPolynomial : 0);
    tables[0][byte] = crc;
  }
  for (std::size_t slice = 1; slice < kSlices; ++slice)
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = tables[slice - 1][byte];
      tables[slice][byte] = (before >> 8) ^ tables[0][before & 0xFF];
    }
  return tables;
}

constexpr CCrcTables kCrcTables = MakeCrcTables();

// The checksum after eight bytes, whose first four already contain the checksum before them.
std::uint32_t CrcOfEight(std::uint64_t bytes) {
  std::uint32_t crc = 0;
  for (std::size_t i = 0; i < kSlices; ++i) crc ^= kCrcTables[kSlices - 1 - i][(bytes >> (8 * i)) & 0xFF];
  return crc;
}

// The checksum after the bytes, whose number is a multiple of eight.
using CCrcOfEights = std::uint32_t (*)(const char* at, std::size_t size, std::uint32_t crc);

std::uint32_t CrcByTables(const char* at, std::size_t size, std::uint32_t crc) {
  for (; size > 0; at += kSlices, size -= kSlices) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    crc = CrcOfEight(eight ^ crc);
  }
  return crc;
}

#ifdef __x86_64__
// With the instruction of the processor, several times as fast.
__attribute__((target("sse4.2"))) std::uint32_t CrcByInstruction(const char* at, std::size_t size,
                                                                 std::uint32_t crc) {
  std::uint64_t result = crc;
  for (; size > 0; at += kSlices, size -= kSlices) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    result = __builtin_ia32_crc32di(result, eight);
  }
  return static_cast<std::uint32_t>(result);
}

CCrcOfEights ChooseCrc() { return __builtin_cpu_supports("sse4.2") ? CrcByInstruction : CrcByTables; }
#else
CCrcOfEights ChooseCrc() { return CrcByTables; }
#endif

}  // namespace

std::uint32_t Crc32c(const void* bytes, std::size_t size, std::uint32_t crc) {
  static const CCrcOfEights crcOfEights = ChooseCrc();
  const char* at = static_cast<const char*>(bytes);
  const std::size_t eights = size / kSlices * kSlices;
  crc = crcOfEights(at, eights, ~crc);
  at += eights;
  size -= eights;
  for (; size > 0; ++at, --size)
    crc = (crc >> 8) ^ kCrcTables[0][(crc ^ static_cast<std::uint8_t>(*at)) & 0xFF];
  return ~crc;
}

}  // namespace vastra
