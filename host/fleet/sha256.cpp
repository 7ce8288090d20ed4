#include "host/fleet/sha256.h"

#include <openssl/evp.h>

#include <new>

namespace vastra {

struct CSha256::CState {
  EVP_MD_CTX* context = EVP_MD_CTX_new();

  CState() = default;
  CState(const CState&) = delete;
  CState& operator=(const CState&) = delete;
  ~CState() { EVP_MD_CTX_free(context); }
};

CSha256::CSha256() : m_pState(std::make_unique<CState>()) {
  if (m_pState->context == nullptr || EVP_DigestInit_ex(m_pState->context, EVP_sha256(), nullptr) != 1)
    throw std::bad_alloc();
}

CSha256::~CSha256() = default;

void CSha256::Add(const void* bytes, std::size_t size) {
  if (EVP_DigestUpdate(m_pState->context, bytes, size) != 1) throw std::bad_alloc();
}

CVersion CSha256::Finish() {
  CVersion version;
  if (EVP_DigestFinal_ex(m_pState->context, version.data(), nullptr) != 1) throw std::bad_alloc();
  return version;
}

CVersion VersionOf(std::string_view bytes) {
  CSha256 digest;
  digest.Add(bytes.data(), bytes.size());
  return digest.Finish();
}

std::string HexOf(const CVersion& version) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * version.size());
  for (const unsigned char byte : version) text += {kDigits[byte >> 4], kDigits[byte & 15]};
  return text;
}

std::optional<CVersion> VersionOfHex(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  CVersion version;
  if (text.size() != 2 * version.size()) return std::nullopt;
  for (std::size_t place = 0; place < text.size(); place++) {
    const std::size_t digit = kDigits.find(text[place]);
    if (digit == std::string_view::npos) return std::nullopt;
    unsigned char& byte = version[place / 2];
    byte = static_cast<unsigned char>(place % 2 == 0 ? digit << 4 : byte | digit);
  }
  return version;
}

}  // namespace vastra
