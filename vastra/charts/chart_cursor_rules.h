// What a chart says of a moment: the value of a curve there, and its text. Without Qt.
#pragma once

#include <span>

#include "vastra/charts/chart_data.h"
#include "vastra/platform/string.h"

namespace vastra {

struct CValueAt {
  bool hasValue = false;
  bool isAway = false;  // the node did not answer
  float value = 0;
};

// The value of the last step at or before moment, unless moment is in a gap. Within a step of several values,
// one of them.
CValueAt ValueAt(std::span<const CCurveStep> steps, CMoment moment);

// The fewest digits that are value; "away", or nothing in a gap.
CString ValueText(const CValueAt& at);
// The same with up to six digits.
CString ShortText(const CValueAt& at);
// A difference or a mean: up to seven digits; empty if it is not finite.
CString ResultText(double value);

}  // namespace vastra
