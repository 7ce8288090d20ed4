// The settings of a file such as /etc/vastra/fleet.conf: parts with keys, in TOML.
#pragma once

#include <cstddef>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vastra {

struct CSetting {
  std::string part, key;
  std::vector<std::string> values;  // one, or those of a list
  std::size_t line = 0;
};

// Begins with the number of the line.
class CSettingsFault : public std::runtime_error {
 public:
  CSettingsFault(std::size_t line, const std::string& text)
      : std::runtime_error("line " + std::to_string(line) + ": " + text) {}
};

// Throws CSettingsFault for what is not TOML, and for what is not a part, or a text, number, flag or list of
// these in one.
std::vector<CSetting> ParseSettings(std::istream& text);

}  // namespace vastra
