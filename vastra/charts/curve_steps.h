// Steps of curves: made of rows and of buckets, and merged when they are too many.
#pragma once

#include "vastra/charts/chart_data.h"
#include "vastra/history/buckets.h"

namespace vastra {

CCurveStep StepOf(CMoment moment, float value);
// Of the values of a part with rows. values of the bucket above 2^32 are shown as 2^32 - 1.
CCurveStep StepOf(const CBucketPart& part, const CBucket& bucket);
bool HasValues(const CBucket& bucket);  // also such that are not finite
// Adds later, which comes after step.
void AddStep(CCurveStep& step, const CCurveStep& later);

// The beginning of the column of a moment. Columns are 2^level milliseconds wide and begin at multiples.
inline CMoment ColumnOf(CMoment moment, int level) { return moment >> level << level; }
// Appends step, or adds it to the last one of the same column.
void AppendToColumn(CCurveSteps& steps, const CCurveStep& step, int level);
// The finest level whose columns are not narrower than a half of range / columns, and not wider than it.
int LevelOf(const CMomentRange& range, std::uint32_t columns);

}  // namespace vastra
