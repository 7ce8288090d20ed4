// Texts of users and of files as a screen can show them: UTF-8, and nothing in them that steers a terminal.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace vastra {

// Whether c goes on with the character that a byte before it began.
inline bool IsInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Characters of text.
inline std::size_t WidthOf(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsInsideCharacter));
}

// The text with "?" for control bytes other than the tab.
inline std::string Printable(std::string_view text) {
  std::string shown(text);
  for (char& c : shown)
    if ((static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7F') c = '?';
  return shown;
}

}  // namespace vastra
