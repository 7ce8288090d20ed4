#include "vastra/charts/curve_steps.h"

#include <algorithm>
#include <cmath>

namespace vastra {

CCurveStep StepOf(CMoment moment, float value) {
  CCurveStep step{moment, moment};
  if (std::isfinite(value)) {
    step.first = step.last = step.least = step.greatest = value;
    step.values = 1;
  } else {
    step.hasInvalid = true;
  }
  return step;
}

CCurveStep StepOf(const CBucketPart& part, const CBucket& bucket) {
  CCurveStep step{part.from, part.to - 1, bucket.first, bucket.last, bucket.least, bucket.greatest};
  step.values = static_cast<std::uint32_t>(std::min<std::uint64_t>(bucket.values, UINT32_MAX));
  step.hasInvalid = bucket.nans > 0 || bucket.infinities > 0;
  return step;
}

void AddStep(CCurveStep& step, const CCurveStep& later) {
  step.to = std::max(step.to, later.to);
  step.hasInvalid |= later.hasInvalid;
  if (later.values == 0) return;
  if (step.values == 0) {
    step.first = later.first;
    step.least = later.least;
    step.greatest = later.greatest;
  }
  step.least = std::min(step.least, later.least);
  step.greatest = std::max(step.greatest, later.greatest);
  step.last = later.last;
  step.values = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(std::uint64_t{step.values} + later.values, UINT32_MAX));
}

void AppendToColumn(CCurveSteps& steps, const CCurveStep& step, int level) {
  if (!steps.empty() && ColumnOf(steps.back().from, level) == ColumnOf(step.from, level))
    AddStep(steps.back(), step);
  else
    steps.push_back(step);
}

bool HasValues(const CBucket& bucket) { return bucket.values || bucket.nans || bucket.infinities; }

int LevelOf(const CMomentRange& range, std::uint32_t columns) {
  const std::int64_t width = (range.to - range.from) / std::max<std::uint32_t>(columns, 1);
  int level = 0;
  while (level < 40 && (std::int64_t{2} << level) <= width) ++level;
  return level;
}

}  // namespace vastra
