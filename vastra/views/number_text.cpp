#include "vastra/views/number_text.h"

#include <charconv>
#include <cmath>

namespace vastra {

CString NumberText(double value, int digits) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr;
  return {text, static_cast<std::size_t>(end - text)};
}

bool ParseNumber(CString text, double& value) {
  text.TrimLeft();
  text.TrimRight();
  std::string_view digits = text.View();
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  double number = 0;
  const char* end = digits.data() + digits.size();
  const auto [stop, fault] = std::from_chars(digits.data(), end, number);
  if (fault != std::errc() || stop != end || !std::isfinite(number)) return false;
  value = number;
  return true;
}

}  // namespace vastra
