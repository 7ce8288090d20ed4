#include "host/web/form_values.h"

namespace vastra {
namespace {

int DigitOf(char c) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto place = kDigits.find(c >= 'A' && c <= 'F' ? static_cast<char>(c + 'a' - 'A') : c);
  return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

// A percent sign that no two digits follow stays.
std::string Decoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? DigitOf(text[i + 1]) : -1;
    const int low = high >= 0 ? DigitOf(text[i + 2]) : -1;
    if (low >= 0) {
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

// Up to the first byte that is not of base64.
std::string FromBase64(std::string_view text) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    const auto digit = kDigits.find(c);
    if (digit == std::string_view::npos) break;
    bits = (bits << 6 | static_cast<unsigned>(digit)) & 0xFFFF;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

}  // namespace

std::optional<CCredentials> BasicCredentials(std::string_view authorization) {
  constexpr std::string_view kScheme = "Basic ";
  if (!authorization.starts_with(kScheme)) return std::nullopt;
  const std::string pair = FromBase64(authorization.substr(kScheme.size()));
  const std::size_t colon = pair.find(':');
  if (colon == std::string::npos) return std::nullopt;
  return CCredentials{pair.substr(0, colon), pair.substr(colon + 1)};
}

CWebQuery FormValues(std::string_view body) {
  CWebQuery::CPairs pairs;
  while (!body.empty()) {
    const std::string_view field = body.substr(0, body.find('&'));
    body.remove_prefix(std::min(field.size() + 1, body.size()));
    const std::string_view key = field.substr(0, field.find('='));
    pairs.emplace_back(Decoded(key), Decoded(field.substr(std::min(key.size() + 1, field.size()))));
  }
  return CWebQuery(std::move(pairs));
}

}  // namespace vastra
