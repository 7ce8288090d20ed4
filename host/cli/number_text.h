// Numbers as the commands show them.
#pragma once

#include <charconv>
#include <cmath>
#include <string>

#include "host/common/shown_text.h"

namespace vastra {

// The shortest string that reads back to the same float; "nan", "inf" or "-inf".
inline std::string ToText(float value) {
  if (std::isnan(value)) return "nan";  // of either sign
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

}  // namespace vastra
