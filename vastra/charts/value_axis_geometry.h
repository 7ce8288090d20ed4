// A value axis of a chart: round ticks with their texts, and the range that fits to values. Without Qt.
#pragma once

#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

// The values at the bottom and at the top of the plot.
struct CAxisRange {
  double low = 0, high = 1;  // finite, low < high

  double Span() const { return high - low; }
  bool operator==(const CAxisRange&) const = default;
};

// The range of an axis for values from least to greatest, which are finite: a little more, to round numbers,
// but not past 0 for that alone.
VASTRA_API CAxisRange FittedRange(double least, double greatest);

// The range with low and high in their order, with a height that can be drawn, within what an axis can show.
VASTRA_API CAxisRange DrawableRange(CAxisRange range);

struct CValueTick {
  double value = 0;
  CString text;
};

// Ticks at round values, at most so many and two at least, unless most is below 2. The texts of an axis have
// the same number of decimals.
std::vector<CValueTick> ValueTicks(const CAxisRange& range, int most);

// 1, 2 or 5 times a power of ten: the least one that divides span into at most so many parts. span > 0.
double RoundStep(double span, int most);

}  // namespace vastra
