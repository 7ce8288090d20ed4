#include "vastra/ui/number_text.h"

#include <charconv>
#include <cmath>

namespace vastra {
namespace {

// False, and value does not change, if text is not exactly one number.
template <class T>
bool Parse(CString text, T& value) {
  text.TrimLeft();
  text.TrimRight();
  std::string_view digits = text.View();
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  const char* end = digits.data() + digits.size();
  T number = 0;
  const auto [stop, fault] = std::from_chars(digits.data(), end, number);
  if (fault != std::errc() || stop != end) return false;
  value = number;
  return true;
}

}  // namespace

CString NumberText(double value, int digits) {
  char text[64];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr;
  return {text, static_cast<std::size_t>(end - text)};
}

bool ParseNumber(const CString& text, double& value) {
  double number = 0;
  if (!Parse(text, number) || !std::isfinite(number)) return false;
  value = number;
  return true;
}

bool ParseWhole(const CString& text, std::int64_t low, std::int64_t high, std::int64_t& value) {
  std::int64_t number = 0;
  if (!Parse(text, number) || number < low || number > high) return false;
  value = number;
  return true;
}

}  // namespace vastra
