// CRC-32C (Castagnoli): the checksum of the records of a journal. Finds each fault of up to 32 bits in a row,
// and bytes that never reached the disk.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vastra {

// The checksum of size bytes. The checksum of bytes that follow others is Crc32c(bytes, size, the checksum of
// the others).
std::uint32_t Crc32c(const void* bytes, std::size_t size, std::uint32_t crc = 0);

}  // namespace vastra
