// Texts of settings, as the drivers read and show them.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace driver {

inline std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// text for a message: at most 60 bytes and "...", cut between two characters of UTF-8.
inline std::string Shown(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  if (text.size() <= kLongest) return std::string(text);
  std::size_t length = kLongest;
  while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
  return std::string(text.substr(0, length)) + "...";
}

}  // namespace driver
