// Bytes written as hex text, hex text of bytes, and the bytes that an archive stores and loads.
#pragma once

#include <string>

#include "vastra/platform/archive.h"

namespace vastra {

// The bytes of hex text. Blanks separate; "00x36" is 36 bytes 00; text in single quotes is copied.
inline std::string Bytes(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size();) {
    if (hex[i] == ' ') {
      ++i;
    } else if (hex[i] == '\'') {
      const std::size_t end = hex.find('\'', i + 1);
      bytes += hex.substr(i + 1, end - i - 1);
      i = end + 1;
    } else if (hex[i] == 'x') {
      std::size_t digits = 0;
      bytes.append(std::stoul(hex.substr(i + 1), &digits) - 1, bytes.back());
      i += 1 + digits;
    } else {
      bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

// Hex digits, two for each byte, so that a failed test shows where bytes differ.
inline std::string Hex(const std::string& bytes) {
  constexpr const char* kDigits = "0123456789ABCDEF";
  std::string hex;
  for (const char c : bytes) hex += {kDigits[(c >> 4) & 15], kDigits[c & 15], ' '};
  return hex;
}

template <class Store>
std::string StoredBytes(Store store) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  store(ar);
  ar.Close();
  return file.Bytes();
}

// Returns how many bytes are left.
template <class Load>
std::size_t LoadBytes(const std::string& bytes, Load load, std::size_t buffer = CArchive::kBufferSize) {
  CMemFile file(bytes);
  CArchive ar(&file, CArchive::load, buffer);
  load(ar);
  return ar.Remaining();
}

}  // namespace vastra
