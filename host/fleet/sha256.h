// SHA-256 (FIPS 180-4), the name of a version of a file.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vastra {

using CVersion = std::array<unsigned char, 32>;

// The digest of the bytes that were added. Throws std::bad_alloc.
class CSha256 {
 public:
  CSha256();
  ~CSha256();
  CSha256(const CSha256&) = delete;
  CSha256& operator=(const CSha256&) = delete;

  void Add(const void* bytes, std::size_t size);
  // Once, at the end.
  CVersion Finish();

 private:
  struct CState;
  std::unique_ptr<CState> m_pState;
};

CVersion VersionOf(std::string_view bytes);

// 64 hexadecimal digits, in lower case.
std::string HexOf(const CVersion& version);
std::optional<CVersion> VersionOfHex(std::string_view text);

}  // namespace vastra
