// Geometry of the trend window, without a window.
#include <gtest/gtest.h>

#include <limits>

#include "vastra/ui/number_text.h"
#include "vastra/views/simple_color.h"
#include "vastra/views/trend_geometry.h"

namespace vastra {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();

// "left,top width x height|" of each.
std::string Text(std::initializer_list<CRect> rects) {
  std::string all;
  for (const CRect& r : rects) {
    CString text;
    text.Format("%d,%d %dx%d|", r.left, r.top, r.Width(), r.Height());
    all += text.Std();
  }
  return all;
}

TEST(TrendGeometry, EveryControlHasItsPlaceAtEverySize) {
  const auto text = [](const CTrendLayout& l) {
    return Text({l.legend, l.edit, l.config, l.freeze, l.load, l.save, l.cancel}) +
           Text({l.plot, l.vertScale, l.horizScale});
  };
  EXPECT_EQ(
      text(LayOutTrend({640, 480}, {-4, -23, 644, 484})),
      "517,16 106x320|517,339 49x25|574,339 49x25|517,374 106x25|517,409 49x25|574,409 49x25|517,443 106x25|"
      "17,16 427x400|448,16 55x400|17,419 427x53|");
  EXPECT_EQ(
      text(LayOutTrend({1000, 700}, {0, 0, 1000, 700})),
      "847,46 120x466|847,517 55x25|912,517 55x25|847,568 120x25|847,619 55x25|912,619 55x25|847,667 120x25|"
      "33,46 705x583|744,46 93x583|33,634 705x77|");
  EXPECT_EQ(LayOutTrend({400, 300}, {0, -60, 400, 300}).plot.top, 0) << "a high caption";
}

TEST(TrendGeometry, AStartScaleReachesFromNoughtToTheNextRoundNumber) {
  const struct {
    double value, minimum, maximum;
  } kCases[] = {
      {37.2, 0, 40},       {40, 0, 100},    {0.5, 0, 1},      {1, 0, 10},        {9.5, 0, 10},
      {100, 0, 1000},      {1e-40, 0, 1},   {-37.2, -40, 0},  {-1, -10, 0},      {-0.0, 0, 0},
      {-2.5e20, -3e20, 0}, {5e38, 0, 6e38}, {kInf, 0, 10000}, {-kInf, 0, 10000}, {kNaN, 0, 10000},
  };
  for (const auto& row : kCases) {
    const CScale scale = StartScale(row.value);
    EXPECT_EQ(scale.minimum, row.minimum) << row.value;
    EXPECT_DOUBLE_EQ(scale.maximum, row.maximum) << row.value;
  }
}

// The runs of a curve in a plot of 990 x 200, the newest value first.
std::string Runs(std::initializer_list<float> values, CScale scale) {
  CList<float, float> history;
  for (const float value : values) history.AddTail(value);
  CCurveWalk walk(history, scale, {990, 200});
  std::string all;
  for (auto run = walk.NextRun(); !run.empty(); run = walk.NextRun()) {
    for (const CPoint point : run) all += std::to_string(point.x) + "," + std::to_string(point.y) + " ";
    all += "|";
  }
  return all;
}

TEST(TrendGeometry, ACurveRunsLeftFromItsNewestPoint) {
  const struct {
    std::initializer_list<float> values;
    CScale scale;
    const char* runs;
  } kCases[] = {
      {{}, {0, 100}, ""},
      {{50, 0, 100, 33.4F}, {0, 100}, "990,100 980,200 970,0 960,133 |"},
      {{-50, 150}, {-100, 100}, "990,150 980,-50 |"},
      {{50, 60}, {100, 0}, "990,100 980,120 |"},  // a file can hold a scale upside down
      {{1, 2}, {0, 0}, ""},
      {{1, 2}, {-kInf, kInf}, ""},
      {{50, 50, kNaN, 0, 0, kNaN, 50}, {0, 100}, "990,100 980,100 |960,200 950,200 |"},
      {{kNaN, 50, kNaN, 0, 0}, {0, 100}, "960,200 950,200 |"},
      {{3e38F, -3e38F, kInf, -kInf}, {0, 1e-30}, "990,-1048576 980,1048576 970,-1048576 960,1048576 |"},
  };
  for (const auto& row : kCases) EXPECT_EQ(Runs(row.values, row.scale), row.runs);
}

TEST(TrendGeometry, TheTimeAxisRunsFromRightToLeftAndTheValueAxisUp) {
  const auto [timeTicks, times, unit] = HorizBandsOf(CRect::Of({12, 300}, {427, 53}));
  EXPECT_EQ(Text({timeTicks, times, unit}), "12,300 427x11|12,310 427x25|12,334 427x19|");
  EXPECT_EQ(HorizTick(timeTicks, 10, 1), 54);
  EXPECT_EQ(HorizTick(timeTicks, 10, 9), 396);
  EXPECT_TRUE(HorizNumber(times, 10, 0) == (CPoint{432, 310}));
  EXPECT_TRUE(HorizNumber(times, 10, 10) == (CPoint{5, 310}));
  EXPECT_EQ(HorizText(1000, 100, 10, 0), "0");
  EXPECT_EQ(HorizText(33, 100, 10, 1), "0.33");
  EXPECT_EQ(HorizText(4294967295U, 100, 10, 10), "4.294967e+08");

  const auto [ticks, numbers] = VertBandsOf(CRect::Of({440, 16}, {55, 400}));
  EXPECT_EQ(Text({ticks, numbers}), "440,16 11x400|451,16 44x400|");
  EXPECT_EQ(VertTick(ticks, 10, 1), 376);
  EXPECT_EQ(Text({VertNumber(numbers, 10, 0), VertNumber(numbers, 10, 10)}), "451,403 44x28|451,3 44x28|");
  EXPECT_EQ(VertText({0, 0}, 10, 10), "0");
  EXPECT_EQ(VertText({-40, 0}, 10, 1), "-36");
  EXPECT_EQ(VertText({0, 1e9}, 10, 10), "1e+09");
}

TEST(TrendGeometry, AClickOnTheLegendFindsTheItemBesideIt) {
  const CRect frame = CRect::Of({517, 16}, {106, 327});  // rows of 16
  EXPECT_TRUE(LegendItem(frame, 20, 3) == (CPoint{517, 72}));
  std::string items;  // of three
  for (const int y : {15, 16, 39, 40, 71, 72, 342})
    items += std::to_string(LegendItemOnPoint(frame, 20, 3, {520, y})) + " ";
  EXPECT_EQ(items, "-1 0 0 1 2 -1 -1 ");
  for (const int x : {516, 517, 622, 623})
    EXPECT_EQ(LegendItemOnPoint(frame, 20, 3, {x, 30}), x == 516 || x == 623 ? -1 : 0) << x;
  EXPECT_EQ(LegendItemOnPoint(frame, 0, 3, {520, 30}), -1) << "no rows";
  EXPECT_EQ(LegendItemOnPoint(CRect::Of({0, 0}, {9, 9}), 20, 3, {5, 5}), -1) << "rows without height";
  const CItemParts low = ItemPartsOf({76, 2}), high = ItemPartsOf({76, 16});
  EXPECT_EQ(Text({low.square, high.square, high.text}), "5,2 15x2|5,4 15x12|25,4 46x12|");
}

TEST(SimpleColor, FourteenColoursThenTheFirstAgain) {
  UINT position = CSimpleColor::GetFirstPosition();
  for (const COLORREF colour :
       {0xFA5A5A, 0x5AFA5A, 0xFAFA5A, 0x5A5AFA, 0xFA5AFA, 0x5AFAFA, 0xA00000, 0x00A000, 0xA0A000, 0x0000A0,
        0xA000A0, 0x00A0A0, 0xA0A0A0, 0x5A5A5A, 0xFA5A5A})
    EXPECT_EQ(CSimpleColor::GetNextColor(position), colour);
}

TEST(NumberText, OnlyAWholeFiniteNumberIsOne) {
  double value = 0;
  for (const auto& [text, number] : {std::pair("5", 5.), {" -1.5\t", -1.5}, {"+2e3", 2000.}, {".5", 0.5}}) {
    EXPECT_EQ(ParseNumber(text, value), 1) << text;
    EXPECT_EQ(value, number);
  }
  for (const char* text : {"", " ", "1,5", "1 2", "1e999", "inf", "nan", "+-5", "+", "5x"})
    EXPECT_EQ(ParseNumber(text, value), 0) << text;
}

}  // namespace
}  // namespace vastra
