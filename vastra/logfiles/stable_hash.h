// CStableHash: a number that identifies bytes, the same on every machine and in every version: FNV-1a with 64
// bits. The keys of locks and journals are such numbers.
#pragma once

#include <cinttypes>
#include <cstdint>

#include "vastra/platform/string.h"

namespace vastra {

class CStableHash {
 public:
  void Add(std::string_view bytes) {
    for (const char byte : bytes) m_hash = (m_hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  }
  // With the length first, so that the bytes of two fields cannot be divided in another way.
  void AddField(std::string_view field) {
    Add(std::to_string(field.size()) + ":");
    Add(field);
  }
  // 16 lower-case hexadecimal digits.
  CString Text() const {
    CString text;
    text.Format("%016" PRIx64, m_hash);
    return text;
  }

 private:
  std::uint64_t m_hash = 0xCBF29CE484222325;
};

}  // namespace vastra
