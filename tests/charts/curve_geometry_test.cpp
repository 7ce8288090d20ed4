// The geometry of curves against a plain model: no peak is lost, none is invented, and no line crosses a gap.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "vastra/charts/curve_geometry.h"

namespace vastra {
namespace {

constexpr CPlotScale kPlot = {
    .range = {0, 1000}, .values = {0, 100}, .left = 50, .top = 10, .width = 500, .height = 200};
constexpr double kLine = 1.5;
constexpr double kSeen = 0.26;  // pixels; a difference that is smaller cannot be seen

CCurveStep Row(CMoment moment, float value, bool isJoined = true) {
  return {moment, moment, value, value, value, value, 1, isJoined, false};
}

// "x,y" of each point of each run.
std::string Text(const CCurveGeometry& curve, const std::vector<CPointRun>& runs) {
  std::string all;
  for (const CPointRun& run : runs) {
    for (std::size_t i = 0; i < run.count; ++i) {
      CString text;
      text.Format("%g,%g ", curve.Points()[run.first + i].x, curve.Points()[run.first + i].y);
      all += text.Std();
    }
    all += "| ";
  }
  return all;
}

TEST(CurveGeometry, AFewValuesAreLinesWithMarks) {
  CCurveGeometry curve;
  const CCurveStep steps[] = {
      Row(0, 0, false),    Row(100, 50), Row(200, 100), Row(400, 0, false),
      Row(600, 10, false), Row(620, 10), Row(622, 20),  {700, 700, 0, 0, 0, 0, 0, true, true},
      Row(800, 30)};
  curve.Build(steps, kPlot, kLine);
  EXPECT_EQ(Text(curve, curve.Lines()), "50,210 100,110 150,10 | 350,190 360,190 361,170 | ");
  EXPECT_EQ(Text(curve, curve.Bands()), "");
  std::string marks;
  for (const CPlotPoint& mark : curve.Marks()) marks += std::to_string(static_cast<int>(mark.x)) + " ";
  EXPECT_EQ(marks, "50 100 150 250 350 450 ") << "a value alone has a mark, values close together have none";
  ASSERT_EQ(curve.Away().size(), 1U);
  EXPECT_EQ(curve.Away()[0].left, 400);
  EXPECT_EQ(curve.Away()[0].right, 450) << "the node is away until the next row";
}

// Two rows far outside of a range of ten milliseconds, and two with values far outside of the axis: the line
// has its slope where it crosses the plot.
TEST(CurveGeometry, LinesFromFarAwayKeepTheirDirection) {
  const std::pair<CMomentRange, CMoment> kCases[] = {{{500'000'000, 500'000'010}, 1'000'000'000},
                                                     {{0, 1000}, 1000}};
  for (const auto& [range, last] : kCases) {
    CPlotScale plot = kPlot;
    plot.range = range;
    plot.values = {49.9999, 50.0001};
    CCurveGeometry curve;
    curve.Build(std::vector{Row(0, 0, false), Row(last, 100)}, plot, kLine);
    ASSERT_EQ(curve.Lines().size(), 1U);
    const CPlotPoint &a = curve.Points()[0], &b = curve.Points()[1];
    const double x = a.x + (plot.Y(50) - a.y) * (b.x - a.x) / (b.y - a.y);
    EXPECT_NEAR(x, plot.X(last / 2), 0.01);
    for (const CPlotPoint& point : curve.Points()) EXPECT_LT(std::abs(point.x) + std::abs(point.y), 20000);
  }
}

// Random rows as steps of some width; moments in order. Now and then a gap, a peak, or NaN.
struct CRandomCurve {
  explicit CRandomCurve(unsigned seed) : random(seed) {
    const double mean = std::exp(Part() * 7 - 1);  // milliseconds between rows
    width = static_cast<CMoment>(1 + Part() * 3);
    double level = 50;
    for (double t = -100; t < 1100; t += 0.5 + Part() * mean) {
      const bool isGap = Part() < 0.01, isNan = Part() < 0.02;
      if (isGap) t += 20;
      level = std::clamp(level + Part() * 6 - 3, 0.0, 100.0);
      const auto value = static_cast<float>(Part() < 0.02 ? Part() * 100 : level);
      const auto moment = static_cast<CMoment>(t);
      rows.push_back({moment, isNan ? NAN : value, isGap});
      CCurveStep row = Row(moment, value, !isGap && rows.size() > 1);
      if (isNan) row.values = 0, row.hasInvalid = true;
      const bool isSame = !steps.empty() && steps.back().from / width == moment / width && !isGap;
      isSame ? Merge(steps.back(), row) : steps.push_back(row);
    }
  }
  double Part() { return std::uniform_real_distribution<double>(0, 1)(random); }
  static void Merge(CCurveStep& step, const CCurveStep& row) {
    step.to = row.to;
    step.hasInvalid |= row.hasInvalid;
    if (row.values == 0) return;
    if (step.values++ == 0) {
      step.first = step.least = step.greatest = row.first;
    }
    step.last = row.last;
    step.least = std::min(step.least, row.least);
    step.greatest = std::max(step.greatest, row.greatest);
  }

  struct CRow {
    CMoment moment;
    float value;
    bool isAfterGap;
  };
  std::mt19937 random;
  CMoment width = 1;  // of the steps
  std::vector<CRow> rows;
  std::vector<CCurveStep> steps;
};

// The heights that a curve has within reach of x.
std::pair<double, double> HeightsAt(const CCurveGeometry& curve, double x, double reach) {
  double top = INFINITY, bottom = -INFINITY;
  const auto add = [&](const CPlotPoint& point) {
    if (std::abs(point.x - x) > reach) return;
    top = std::min(top, point.y);
    bottom = std::max(bottom, point.y);
  };
  for (const CPlotPoint& point : curve.Points()) add(point);
  for (const CPlotPoint& mark : curve.Marks()) add(mark);
  return {top, bottom};
}

void CheckNothingIsAt(double x, const CCurveGeometry& curve) {
  for (const std::vector<CPointRun>* runs : {&curve.Lines(), &curve.Bands()})
    for (const CPointRun& run : *runs)
      for (std::size_t i = run.first + 1; i < run.first + run.count; ++i) {
        const auto [low, high] = std::minmax(curve.Points()[i - 1].x, curve.Points()[i].x);
        EXPECT_FALSE(low < x && x < high) << x;
      }
}

TEST(CurveGeometry, NoPeakIsLostNoneIsInventedAndAGapIsEmptyAtAnyZoom) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    CRandomCurve made(seed);
    CPlotScale plot = kPlot;
    if (seed % 2)
      plot.range = {static_cast<CMoment>(made.Part() * 500), 500 + static_cast<CMoment>(made.Part() * 500)};
    const double pixels =
        static_cast<double>(made.width) * plot.width / static_cast<double>(plot.range.to - plot.range.from);
    CCurveGeometry curve;
    curve.Build(made.steps, plot, kLine);
    float least = INFINITY, greatest = -INFINITY;
    for (std::size_t i = 0; i < made.rows.size(); ++i) {
      const auto& row = made.rows[i];
      if (i > 0 && row.isAfterGap) {
        CheckNothingIsAt((plot.X(made.rows[i - 1].moment) + plot.X(row.moment)) / 2, curve);
      }
      if (std::isnan(row.value)) continue;
      least = std::min(least, row.value), greatest = std::max(greatest, row.value);
      if (!plot.range.Has(row.moment)) continue;
      const auto [top, bottom] = HeightsAt(curve, plot.X(row.moment), 1 + pixels);
      const double y = plot.Y(static_cast<double>(row.value));
      ASSERT_LE(top, y + kSeen) << "seed " << seed << " at " << row.moment;
      ASSERT_GE(bottom, y - kSeen) << "seed " << seed << " at " << row.moment;
    }
    for (const CPlotPoint& point : curve.Points()) {
      ASSERT_GE(point.y, plot.Y(static_cast<double>(greatest)) - kLine) << seed;
      ASSERT_LE(point.y, plot.Y(static_cast<double>(least)) + kLine) << seed;
    }
    ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
  }
}

}  // namespace
}  // namespace vastra
