// Numbers as the commands show them.
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace vastra {

// The shortest string that reads back to the same float; "nan", "inf" or "-inf".
inline std::string ToText(float value) {
  if (std::isnan(value)) return "nan";  // of either sign
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// "1 file", "2 files".
inline std::string Counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace vastra
