// The settings of a file such as /etc/vastra/fleet.conf: parts with keys, in the form of TOML.
#pragma once

#include <cstddef>
#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

namespace vastra {

struct CSetting {
  std::string part, key;
  std::vector<std::string> values;
  bool isList = false;
  std::size_t line = 0;
};

// Begins with the number of the line.
class CSettingsFault : public std::runtime_error {
 public:
  CSettingsFault(std::size_t line, const std::string& text)
      : std::runtime_error("line " + std::to_string(line) + ": " + text) {}
};

// Throws CSettingsFault for the first line that cannot be read without a doubt.
std::vector<CSetting> ParseSettings(std::istream& text);

}  // namespace vastra
