#include "host/common/shown_text.h"

#include <string.h>

#include <algorithm>

#include "vastra/platform/string.h"

namespace vastra {
namespace {

// Bytes that follow the first byte of a UTF-8 character.
int BytesAfter(unsigned char first) {
  if (first < 0xC2 || first > 0xF4) return 0;
  return 1 + (first >= 0xE0) + (first >= 0xF0);
}

// U+0080 to U+009F. In UTF-8 the byte C2 comes first; alone the byte is text in an older encoding.
bool IsHighControl(unsigned char c) { return c >= 0x80 && c <= 0x9F; }

bool IsControl(unsigned char c) { return (c < ' ' && c != '\t') || c == 0x7F || IsHighControl(c); }

// Blanks as wide as text is on the screen.
std::string BlanksFor(std::string_view text) {
  std::string blanks;
  for (const char c : Printable(text))
    if (!IsInsideCharacter(c)) blanks += c == '\t' ? '\t' : ' ';
  return blanks;
}

}  // namespace

std::size_t WidthOf(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsInsideCharacter));
}

std::string Printable(std::string_view text) {
  std::string shown;
  int rest = 0;  // bytes that the character still has
  for (const char byte : text) {
    const auto c = static_cast<unsigned char>(byte);
    const bool isInside = rest > 0 && IsInsideCharacter(byte);
    if (isInside && shown.back() == '\xC2' && IsHighControl(c))
      shown.back() = '?';
    else
      shown += !isInside && IsControl(c) ? '?' : byte;
    rest = isInside ? rest - 1 : BytesAfter(c);
  }
  return shown;
}

std::string PrintableLines(std::string_view text) {
  std::string shown;
  for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
    const bool isCrLf = end > 0 && text[end - 1] == '\r';
    shown += Printable(text.substr(0, end - isCrLf)) + "\n";
  }
  return shown + Printable(text);
}

std::string OneLine(std::string_view text) {
  std::string line = PrintableLines(text);
  while (!line.empty() && line.back() == '\n') line.pop_back();
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

std::string Shortened(const char* text, std::size_t most) {
  constexpr std::string_view kRest = "...";
  std::size_t size = ::strnlen(text, most + 1);
  if (size <= most) return {text, size};
  for (size = most - kRest.size(); size > 0 && IsInsideCharacter(text[size]);) --size;
  return std::string(text, size).append(kRest);
}

std::string Counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

CMarkedPlace MarkPlace(std::string_view text, std::size_t offset) {
  constexpr std::size_t kSide = 60;  // bytes at most before the offset, and from it on
  std::size_t begin = text.substr(0, offset).find_last_of("\r\n") + 1;
  std::size_t end = std::min(text.find_first_of("\r\n", offset), text.size());
  if (offset - begin > kSide)
    for (begin = offset - kSide; begin < offset && IsInsideCharacter(text[begin]);) ++begin;
  if (end - offset > kSide)
    for (end = offset + kSide; end > offset && IsInsideCharacter(text[end]);) --end;
  return {Printable(text.substr(begin, end - begin)), BlanksFor(text.substr(begin, offset - begin)) + "^"};
}

}  // namespace vastra
