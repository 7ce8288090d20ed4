// Strings of users, files and drivers, made safe for a screen. Each host passes everything that it shows
// through Printable or PrintableLines, so that no string can control a terminal.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vastra {

// Number of characters of text.
std::size_t WidthOf(std::string_view text);

// One line: text with "?" for each control character (U+0000 to U+001F except the tab, U+007F to U+009F).
// Other bytes do not change, also those that are not UTF-8.
std::string Printable(std::string_view text);
// Several lines: line feeds are kept, and a carriage return before a line feed is removed.
std::string PrintableLines(std::string_view text);

// The same with a blank for each line end.
std::string OneLine(std::string_view text);
// text up to so many bytes, which end with "..." in place of the rest; a character of UTF-8 is not cut. Reads
// no more of text than it returns.
std::string Shortened(const char* text, std::size_t most = 2000);

// "1 file", "2 files".
std::string Counted(std::uint64_t count, const std::string& noun);

// A place in a text, for an error message: the line of the text around the place, cut to what a screen line
// can show, and a line with a caret under the place.
struct CMarkedPlace {
  std::string line;
  std::string caret;
};
// offset: bytes from the start of text, up to its size.
CMarkedPlace MarkPlace(std::string_view text, std::size_t offset);

}  // namespace vastra
