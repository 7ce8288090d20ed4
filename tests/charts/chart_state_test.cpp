// What a chart does when the user moves it, and how its axes are chosen, without a window.
#include <gtest/gtest.h>

#include <random>

#include "vastra/charts/chart_frame_geometry.h"
#include "vastra/charts/chart_state_rules.h"

namespace vastra {
namespace {

// A picture of rows once a second from 0 to 99 s: each variable counts from low up to high.
CChartPicture PictureOf(std::initializer_list<std::tuple<const char*, float, float>> variables) {
  CChartQuery query;
  std::vector<CCurveSteps> curves;
  for (const auto& [name, low, high] : variables) {
    query.variables.emplace_back(name);
    CCurveSteps& steps = curves.emplace_back();
    for (int i = 0; i < 100; ++i) {
      const float value = low + (high - low) * static_cast<float>(i) / 99;
      steps.push_back({i * 1000, i * 1000, value, value, value, value, 1, i > 0, false});
    }
  }
  return {query, curves};
}

struct CTestChart : CChartState {
  explicit CTestChart(std::initializer_list<std::tuple<const char*, float, float>> variables) {
    SetRows({0, 99001});
    for (const auto& variable : variables) Add(std::get<0>(variable));
    SetPicture(PictureOf(variables));
  }
  std::string Axes() const {  // the axis of each curve
    std::string axes;
    for (const CChartCurve& curve : Layout().curves) axes += std::to_string(curve.axis);
    return axes;
  }
};

TEST(ChartState, CurvesShareAnAxisOnWhichAllCanBeRead) {
  CTestChart chart({{"a", 0, 100}, {"b", 50, 90}, {"c", 0, 1}, {"d", 850, 900}, {"e", 3, 3}});
  EXPECT_EQ(chart.Axes(), "11231") << "c would be flat beside a, d would make a flat";
  EXPECT_EQ(chart.Layout().axes[0].range, FittedRange(0, 100));
  CTestChart units({{"a", 0, 100}, {"b", 50, 90}, {"c", 50, 90}});
  units.RemoveAll();
  units.SetUnits({{"b", "K"}, {"c", "K"}});
  for (const char* name : {"a", "b", "c"}) units.Add(name);
  EXPECT_EQ(units.Axes(), "122") << "units are not mixed";
  EXPECT_EQ(units.AxisUnit(2), "K");
  units.Use(0, 2);
  EXPECT_EQ(units.AxisUnit(2), "");
  EXPECT_EQ(units.Layout().axes.size(), 1U) << "an axis without curves is removed";
  units.Use(1, 0);
  EXPECT_EQ(units.Axes(), "212");
  units.Remove(1);
  EXPECT_EQ(units.Axes(), "22");
  CTestChart many({{"a", 0, 1}, {"b", 0, 100}, {"c", 0, 1e4}, {"d", 0, 1e6}, {"e", 0, 1e8}, {"f", 0, 3}});
  EXPECT_EQ(many.Axes(), "123441") << "the fifth axis is not made by itself";
}

std::string RangeText(const CChartState& chart) {
  return std::to_string(chart.Range().from) + "-" + std::to_string(chart.Range().to);
}

TEST(ChartState, TheWayLeadsBackAndForward) {
  CTestChart chart({{"a", 0, 100}});
  const std::string whole = RangeText(chart);
  chart.Zoom(50000, 0.5, CChartState::moveWheel);
  chart.Zoom(50000, 0.5, CChartState::moveWheel);
  const std::string near = RangeText(chart);
  chart.ShowRectangle({40000, 60000}, 0.25, 0.5);
  const CAxisRange fitted = FittedRange(37, 62);
  EXPECT_LT(chart.Layout().axes[0].range.high, fitted.high);
  EXPECT_FALSE(chart.Layout().axes[0].isAutomatic);
  chart.Back();
  EXPECT_EQ(RangeText(chart), near);
  EXPECT_TRUE(chart.Layout().axes[0].isAutomatic) << "the range of values does not come back";
  chart.Back();
  EXPECT_EQ(RangeText(chart), whole) << "turns of the wheel are one step";
  EXPECT_FALSE(chart.HasBack());
  chart.Forward();
  chart.Forward();
  EXPECT_EQ(RangeText(chart), "40000-60000");
  EXPECT_FALSE(chart.HasForward());
  chart.Back();
  chart.Pan(0.5, CChartState::moveKeys);
  EXPECT_FALSE(chart.HasForward()) << "a new way ends the former one";
}

TEST(ChartState, ItFollowsTheNewestRow) {
  CTestChart chart({{"a", 0, 100}});
  chart.Show({0, 10000}, CChartState::moveKeys);
  chart.Follow(true);
  EXPECT_EQ(RangeText(chart), "89201-99201");
  chart.SetRows({0, 200001});
  EXPECT_EQ(RangeText(chart), "190201-200201");
  chart.Zoom(195000, 0.5, CChartState::moveWheel);
  EXPECT_TRUE(chart.Layout().isFollowing) << "zoom does not end it";
  EXPECT_EQ(RangeText(chart), "195101-200101");
  chart.Pan(-1, CChartState::moveKeys);
  EXPECT_FALSE(chart.Layout().isFollowing);
  chart.SetRows({0, 300001});
  EXPECT_EQ(RangeText(chart), "190101-195101");
  chart.ShowWhole();
  chart.SetRows({0, 400001});
  EXPECT_GT(chart.Range().to, 400001) << "the whole range grows with the rows";
}

TEST(ChartState, RangesStayWithinAllMoments) {
  CMomentRange range = {0, 1000};
  for (int i = 0; i < 200; ++i) {
    range = ZoomedAbout(range, 700, i < 100 ? 0.5 : 3);
    ASSERT_GE(range.to - range.from, kShortestRange);
    ASSERT_GE(range.from, kFirstMoment);
    ASSERT_LE(range.to, kEndMoment);
  }
  EXPECT_EQ(Panned({0, 1000}, INT64_MAX).to, kEndMoment);
  EXPECT_EQ(Panned({0, 1000}, INT64_MIN).from, kFirstMoment);
  const CMomentRange zoomed = ZoomedAbout(CMomentRange{0, 1000}, 250, 0.5);
  EXPECT_EQ(zoomed.from, 125) << "the moment keeps its place";
}

// A query has room beside the range, its steps are not wider than a pixel and begin at the same moments while
// the range moves.
TEST(ChartState, AQueryServesWhileTheRangeMovesALittle) {
  std::mt19937 random(1);
  for (int i = 0; i < 2000; ++i) {
    const auto length = static_cast<CMoment>(std::exp(std::uniform_real_distribution<double>(3, 27)(random)));
    const auto from = static_cast<CMoment>(random()) * 300 - 500'000'000'000;
    const double pixels = 100 + static_cast<double>(random() % 3000);
    const CMomentRange range = {from, from + length};
    const CChartQuery query = QueryFor(range, pixels, {"a"});
    const CMoment step = (query.range.to - query.range.from) / query.columns;
    ASSERT_EQ(step * query.columns, query.range.to - query.range.from);
    ASSERT_EQ(query.range.from % step, 0);
    ASSERT_TRUE(step == 1 || static_cast<double>(step) * pixels <= static_cast<double>(length)) << length;
    ASSERT_LE(query.columns, pixels * 5);
    for (const CMoment by : {length / 8, -length / 8, CMoment{0}}) {
      const CMomentRange moved = {range.from + by, range.to + by};
      ASSERT_TRUE(Serves(query, moved, QueryFor(moved, pixels, {"a"}))) << length;
    }
    const CMomentRange away = {range.from + length / 2, range.to + length / 2};
    ASSERT_FALSE(Serves(query, away, QueryFor(away, pixels, {"a"})));
    ASSERT_FALSE(Serves(query, range, QueryFor(range, pixels, {"b"})));
  }
}

TEST(ChartState, AValueIsThatOfTheLastRowUnlessAGapFollows) {
  const CCurveStep steps[] = {{10, 20, 1, 2, 1, 2, 5, false, false},
                              {30, 30, 3, 3, 3, 3, 1, true, false},
                              {50, 50, 0, 0, 0, 0, 0, true, true},
                              {90, 90, 4, 4, 4, 4, 1, false, false}};
  const std::pair<CMoment, const char*> kTexts[] = {{9, ""},   {10, "1"},    {20, "2"}, {29, "2"}, {30, "3"},
                                                    {49, "3"}, {50, "away"}, {51, ""},  {90, "4"}, {91, ""}};
  for (const auto& [moment, text] : kTexts) EXPECT_EQ(ValueText(ValueAt(steps, moment)), text) << moment;
}

TEST(ChartFrame, NothingRunsOutOfTheFrameAtAnySize) {
  std::mt19937 random(2);
  const auto below = [&](double most) { return std::uniform_real_distribution<double>(0, most)(random); };
  for (int i = 0; i < 5000; ++i) {
    CFrameRequest request = {.width = 1 + below(i % 2 ? 300 : 2560),
                             .height = 1 + below(i % 3 ? 1440 : 200),
                             .font = {4 + below(16), 8 + below(30)},
                             .axes = {},
                             .curves = random() % 65,
                             .names = below(4000)};
    for (auto axis = random() % 9; axis-- > 0;) request.axes.push_back(below(150));
    const CChartFrame frame = LayOutChart(request);
    const auto isInside = [](const CChartBox& box, double width, double height) {
      return box.left >= -0.001 && box.top >= 0 && box.Right() <= width + 0.001 &&
             box.Bottom() <= height + 1.001;
    };
    for (const CLegendItem& item : frame.items) {
      EXPECT_TRUE(isInside(item.all, request.width, 1e9)) << i;
      EXPECT_LE(item.value.Right(), item.all.Right() + 0.001) << i;
      EXPECT_LE(item.name.Right(), item.value.left + 0.001) << i;
      EXPECT_LE(item.all.Bottom(), std::max(frame.legend.Bottom(), request.height) + 0.001) << i;
    }
    EXPECT_EQ(frame.more.width > 0, frame.legend.height > 0 && frame.items.size() < request.curves) << i;
    if (request.width > 60 && request.height > 120) {
      EXPECT_TRUE(isInside(frame.plot, request.width, request.height)) << i;
    }
    for (const CChartBox& axis : frame.axes)
      EXPECT_TRUE(isInside(axis, request.width, request.height + 2)) << i;
  }
}

}  // namespace
}  // namespace vastra
