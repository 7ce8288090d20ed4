#include "vastra/charts/chart_cursor_rules.h"

#include <algorithm>
#include <cmath>

#include "vastra/history/float_text.h"
#include "vastra/ui/number_text.h"

namespace vastra {

CValueAt ValueAt(std::span<const CCurveStep> steps, CMoment moment) {
  const auto next = std::ranges::upper_bound(steps, moment, {}, &CCurveStep::from);
  if (next == steps.begin()) return {};
  const CCurveStep& step = next[-1];
  const bool isInGap = moment > step.to && (next == steps.end() || !next->isJoined);
  if (isInGap) return {};
  if (step.values == 0) return {.isAway = true};
  return {.hasValue = true, .value = moment >= step.to ? step.last : step.first};
}

CString ValueText(const CValueAt& at) {
  if (!at.hasValue) return at.isAway ? "away" : "";
  char text[kMaxShortestText];
  return {text, static_cast<std::size_t>(PutShortest(text, at.value) - text)};
}

CString ShortText(const CValueAt& at) {
  return at.hasValue && std::isfinite(at.value) ? NumberText(static_cast<double>(at.value), 6)
                                                : ValueText(at);
}

CString ResultText(double value) { return std::isfinite(value) ? NumberText(value, 7) : CString(); }

}  // namespace vastra
