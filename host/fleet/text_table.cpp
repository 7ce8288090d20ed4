#include "host/fleet/text_table.h"

#include <algorithm>
#include <cstdint>

#include "host/common/shown_text.h"

namespace vastra {

std::string TextTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], WidthOf(row[i]));
  }
  std::string text;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i)
      text.append(row[i]).append(i + 1 < row.size() ? widths[i] - WidthOf(row[i]) + 2 : 0, ' ');
    text += '\n';
  }
  return text;
}

std::string AgeWords(double seconds) {
  constexpr double kMinute = 60, kHour = 3600, kDay = 86400, kLongest = 1e12;
  const auto text = [&](double unit, const char* name) {
    return std::to_string(static_cast<std::int64_t>(std::clamp(seconds, 0.0, kLongest) / unit)) + " " + name;
  };
  if (!(seconds >= 2 * kMinute)) return text(1, "s");
  if (seconds < 2 * kHour) return text(kMinute, "min");
  return seconds < 2 * kDay ? text(kHour, "h") : text(kDay, "d");
}

}  // namespace vastra
