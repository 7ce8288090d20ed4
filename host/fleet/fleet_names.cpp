#include "host/fleet/fleet_names.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vastra {
namespace {

constexpr std::size_t kLongestPart = 255, kLongestKey = 1024;
constexpr std::string_view kPack = "=pack";  // no text has this token

struct CSubjectForm {
  std::string_view kind;
  bool hasChunk;
};
constexpr std::array<CSubjectForm, 3> kForms = {{{"log", true}, {"done", false}, {"ask", true}}};
const CSubjectForm& FormOf(EFileSubject kind) { return kForms[static_cast<std::size_t>(kind)]; }

bool IsPlain(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         byte == '-' || byte == '_';
}

bool IsControl(char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f; }

bool IsPart(std::string_view part) {
  return !part.empty() && part.size() <= kLongestPart && part != "." && part != ".." &&
         std::none_of(part.begin(), part.end(), IsControl);
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t begin = 0;;) {
    const std::size_t end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end - begin));
    if (end == std::string_view::npos) return parts;
    begin = end + 1;
  }
}

template <typename Number>
bool Read(std::string_view text, Number& number, int base) {
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return fault == std::errc() && end == text.data() + text.size();
}

}  // namespace

bool IsFleetName(std::string_view name) {
  return IsPart(name) && name.front() != '.' && name.find('/') == std::string_view::npos;
}

bool IsFleetKey(std::string_view key) {
  const std::vector<std::string_view> parts = Split(key, '/');
  return key.size() <= kLongestKey && parts.size() >= 2 && std::all_of(parts.begin(), parts.end(), IsPart);
}

std::string RepeatedPath(const std::string& path, std::uint64_t number) {
  constexpr std::size_t kLongestExtension = 32;
  constexpr std::string_view kDigits = "0123456789";
  const std::size_t begin = path.rfind('/') + 1, dot = path.rfind('.');
  const bool hasExtension = dot != std::string::npos && dot > begin && path.size() - dot <= kLongestExtension;
  std::string name = path.substr(begin, hasExtension ? dot - begin : std::string::npos);
  const std::string end = "~" + std::to_string(number) + (hasExtension ? path.substr(dot) : "");
  const std::size_t last = name.find_last_not_of(kDigits);
  if (last != std::string::npos && name[last] == '~' && last + 1 < name.size()) name.resize(last);
  std::size_t size = std::min(name.size(), kLongestPart - end.size());
  while (size > 0 && size < name.size() && (name[size] & 0xc0) == 0x80) --size;  // in a character of UTF-8
  return path.substr(0, begin) + name.substr(0, size) + end;
}

std::string Token(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string token;
  token.reserve(text.size() + text.size() / 2);
  for (const char byte : text) {
    if (IsPlain(byte)) {
      token += byte;
      continue;
    }
    const auto bits = static_cast<unsigned char>(byte);
    token += {'=', kDigits[bits >> 4], kDigits[bits & 15]};
  }
  return token;
}

std::optional<std::string> TextOfToken(std::string_view token) {
  std::string text;
  for (std::size_t place = 0; place < token.size(); place++) {
    unsigned char byte = 0;
    if (token[place] != '=')
      text += token[place];
    else if (Read(token.substr(place + 1, 2), byte, 16))
      text += static_cast<char>(byte), place += 2;
  }
  if (text.empty() || Token(text) != token) return std::nullopt;  // each text has one token
  return text;
}

std::vector<std::string_view> TokensOf(std::string_view subject) { return Split(subject, '.'); }

std::string NodeSubject(std::string_view kind, const CFleetNode& node) {
  return std::string("vastra.")
      .append(kind)
      .append(".")
      .append(Token(node.site))
      .append(".")
      .append(Token(node.name));
}

std::string SubjectOf(EFileSubject kind, const CFileSubject& parts) {
  std::string subject = NodeSubject(FormOf(kind).kind, parts.file.node);
  subject.append(".").append(parts.IsPack() ? std::string(kPack) : Token(parts.file.key));
  subject.append(".").append(HexOf(parts.version));
  if (FormOf(kind).hasChunk) subject.append(".").append(std::to_string(parts.chunk));
  return subject;
}

std::optional<CFileSubject> ParseFileSubject(EFileSubject kind, std::string_view subject) {
  const std::vector<std::string_view> tokens = TokensOf(subject);
  const CSubjectForm& form = FormOf(kind);
  if (tokens.size() != (form.hasChunk ? 7U : 6U) || tokens[0] != "vastra" || tokens[1] != form.kind)
    return {};
  const std::optional<std::string> site = TextOfToken(tokens[2]), node = TextOfToken(tokens[3]);
  const std::optional<CVersion> version = VersionOfHex(tokens[5]);
  if (!site || !node || !version || !IsFleetName(*site) || !IsFleetName(*node)) return {};
  CFileSubject parts = {{{*site, *node}, ""}, *version};
  if (tokens[4] != kPack) {
    const std::optional<std::string> key = TextOfToken(tokens[4]);
    if (!key || !IsFleetKey(*key)) return {};
    parts.file.key = *key;
  }
  if (form.hasChunk && !Read(tokens[6], parts.chunk, 10)) return {};
  return parts;
}

}  // namespace vastra
