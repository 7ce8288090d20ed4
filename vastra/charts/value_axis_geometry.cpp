#include "vastra/charts/value_axis_geometry.h"

#include <algorithm>
#include <cmath>

#include "vastra/ui/number_text.h"

namespace vastra {
namespace {

constexpr double kPadding = 0.02;     // of the span, on each side
constexpr int kFittedSteps = 20;      // a fitted range ends at multiples of a round step
constexpr double kLargest = 1e300;    // of a bound
constexpr double kLeastPart = 1e-12;  // of the span, as a part of the bounds: below it doubles have no steps
constexpr double kLongNumber = 1e7, kShortNumber = 1e-5;  // beyond them texts have exponents

double Larger(const CAxisRange& range) { return std::max(std::abs(range.low), std::abs(range.high)); }

// The texts of ticks of step: decimals as the step has them, or an exponent for all.
CString TickNumber(double value, double step, double largest) {
  const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
  if (largest < kLongNumber && step > kShortNumber) {
    CString text;
    text.Format("%.*f", decimals, value);
    return text;
  }
  return NumberText(value, std::clamp(static_cast<int>(std::ceil(std::log10(largest / step))) + 1, 1, 15));
}

}  // namespace

double RoundStep(double span, int most) {
  const double least = span / std::max(most, 1), power = std::pow(10, std::floor(std::log10(least)));
  for (const double step : {1.0, 2.0, 5.0})
    if (step * power >= least * (1 - 1e-9)) return step * power;
  return 10 * power;
}

CAxisRange DrawableRange(CAxisRange range) {
  if (!std::isfinite(range.low) || !std::isfinite(range.high)) return {};
  if (range.low > range.high) std::swap(range.low, range.high);
  range.low = std::clamp(range.low, -kLargest, kLargest);
  range.high = std::clamp(range.high, -kLargest, kLargest);
  const double least = std::max(Larger(range) * kLeastPart, 1e-300);
  if (range.Span() >= least) return range;
  const double middle = range.low + range.Span() / 2;
  return {middle - least, middle + least};
}

CAxisRange FittedRange(double least, double greatest) {
  double padding = (greatest - least) * kPadding;
  if (padding <= std::max(std::abs(least), std::abs(greatest)) * kLeastPart)
    padding = greatest == 0 ? 1 : std::max(std::abs(greatest), std::abs(least)) * 0.1;
  CAxisRange range = {least - padding, greatest + padding};
  const double step = RoundStep(range.Span(), kFittedSteps);
  range = {std::floor(range.low / step) * step, std::ceil(range.high / step) * step};
  if (least >= 0) range.low = std::max(range.low, 0.0);
  if (greatest <= 0) range.high = std::min(range.high, 0.0);
  return DrawableRange(range);
}

std::vector<CValueTick> ValueTicks(const CAxisRange& range, int most) {
  const double step = RoundStep(range.Span(), most);
  const double first = std::ceil(range.low / step - 1e-9), last = std::floor(range.high / step + 1e-9);
  std::vector<CValueTick> ticks;
  for (int i = 0; i <= std::min(static_cast<int>(last - first), most); ++i) {
    const double value = (first + i) * step + 0.0;  // no "-0"
    ticks.push_back({value, TickNumber(value, step, std::max(Larger(range), step))});
  }
  return ticks;
}

}  // namespace vastra
