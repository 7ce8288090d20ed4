#include "host/cli/terminal/figures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr int kBarWidth = 20;

std::string Blanks(std::size_t count) { return std::string(count, ' '); }

}  // namespace

std::string PadLeft(const std::string& text, std::size_t width) {
  return Blanks(width - std::min(width, WidthOf(text))) + text;
}

std::string PadRight(const std::string& text, std::size_t width) {
  return text + Blanks(width - std::min(width, WidthOf(text)));
}

std::string Bar(float part) {
  const auto done = static_cast<std::size_t>(part * kBarWidth);
  return "[" + std::string(done, '#') + std::string(kBarWidth - done, '.') + "]";
}

std::string SparkLine(const std::deque<float>& values) {
  constexpr const char* kBars[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  float lowest = std::numeric_limits<float>::infinity(), highest = -lowest;
  for (const float value : values)
    if (std::isfinite(value)) lowest = std::min(lowest, value), highest = std::max(highest, value);
  const double range = double{highest} - double{lowest};
  std::string line;
  for (const float value : values) {
    const double height = range > 0 ? (double{value} - double{lowest}) / range * 7 : 3;
    line += std::isfinite(value) ? kBars[std::lround(height)] : " ";
  }
  return line;
}

}  // namespace vastra
