// Geometry of the trend window, without a window.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "vastra/ui/number_text.h"
#include "vastra/views/simple_color.h"
#include "vastra/views/trend_geometry.h"

namespace vastra {

void PrintTo(const CRect& r, std::ostream* os) {
  *os << r.left << "," << r.top << " " << r.Width() << "x" << r.Height();
}
void PrintTo(CPoint p, std::ostream* os) { *os << p.x << "," << p.y; }

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();

std::string Text(const CTrendLayout& layout) {
  std::ostringstream text;
  for (const CRect& part : {layout.legend, layout.edit, layout.config, layout.freeze, layout.load,
                            layout.save, layout.cancel, layout.plot, layout.vertScale, layout.horizScale}) {
    PrintTo(part, &text);
    text << "|";
  }
  return text.str();
}

TEST(TrendGeometry, EveryControlHasItsPlaceAtEverySize) {
  EXPECT_EQ(
      Text(LayOutTrend({640, 480}, {-4, -23, 644, 484})),
      "517,16 106x320|517,339 49x25|574,339 49x25|517,374 106x25|517,409 49x25|574,409 49x25|517,443 106x25|"
      "17,16 427x400|448,16 55x400|17,419 427x53|");
  EXPECT_EQ(
      Text(LayOutTrend({1000, 700}, {0, 0, 1000, 700})),
      "847,46 120x466|847,517 55x25|912,517 55x25|847,568 120x25|847,619 55x25|912,619 55x25|847,667 120x25|"
      "33,46 705x583|744,46 93x583|33,634 705x77|");
  EXPECT_EQ(LayOutTrend({400, 300}, {0, -60, 400, 300}).plot.top, 0) << "a high caption";
}

TEST(TrendGeometry, AStartScaleReachesFromNoughtToTheNextRoundNumber) {
  const struct {
    double value, minimum, maximum;
  } kCases[] = {
      {37.2, 0, 40},       {40, 0, 100},     {0.5, 0, 1},       {1, 0, 10},       {3.5, 0, 4},
      {9.5, 0, 10},        {10, 0, 100},     {95, 0, 100},      {100, 0, 1000},   {1e-40, 0, 1},
      {-37.2, -40, 0},     {-1, -10, 0},     {0, 0, 0},         {-0.0, 0, 0},     {4.5e9, 0, 5e9},
      {-2.5e20, -3e20, 0}, {kInf, 0, 10000}, {-kInf, 0, 10000}, {kNaN, 0, 10000},
  };
  for (const auto& row : kCases) {
    const CScale scale = StartScale(row.value);
    EXPECT_EQ(scale.minimum, row.minimum) << row.value;
    EXPECT_EQ(scale.maximum, row.maximum) << row.value;
  }
  constexpr float kMost = std::numeric_limits<float>::max();
  EXPECT_LT(double{kMost}, StartScale(kMost).maximum);
  EXPECT_GT(1e39, StartScale(kMost).maximum);
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
      {{50}, {0, 100}, ""},
      {{50, 0, 100, 33.4F}, {0, 100}, "990,100 980,200 970,0 960,133 |"},
      {{-50, 150}, {-100, 100}, "990,150 980,-50 |"},
      {{50, 60}, {100, 0}, "990,100 980,120 |"},  // a file can hold a scale upside down
      {{1, 2}, {0, 0}, ""},
      {{7, 7}, {7, 7}, ""},
      {{1, 2}, {kNaN, 1}, ""},
      {{1, 2}, {-kInf, kInf}, ""},
      {{50, 50, kNaN, 0, 0, kNaN, 50, kNaN}, {0, 100}, "990,100 980,100 |960,200 950,200 |"},
      {{kNaN, 50, kNaN, 0, 0}, {0, 100}, "960,200 950,200 |"},
      {{3e38F, -3e38F, kInf, -kInf}, {0, 1e-30}, "990,-1048576 980,1048576 970,-1048576 960,1048576 |"},
  };
  for (const auto& row : kCases) EXPECT_EQ(Runs(row.values, row.scale), row.runs);
}

TEST(TrendGeometry, TheTimeAxisRunsFromRightToLeft) {
  const CRect area = CRect::Of({12, 300}, {427, 53});
  const CHorizBands bands = HorizBandsOf(area);
  EXPECT_EQ(bands.ticks, (CRect{12, 300, 439, 311}));
  EXPECT_EQ(bands.numbers, (CRect{12, 310, 439, 335}));
  EXPECT_EQ(bands.unit, (CRect{12, 334, 439, 353}));
  EXPECT_EQ(HorizTick(bands.ticks, 10, 1), 54);
  EXPECT_EQ(HorizTick(bands.ticks, 10, 9), 396);
  EXPECT_EQ(HorizNumber(bands.numbers, 10, 0), (CPoint{432, 310}));
  EXPECT_EQ(HorizNumber(bands.numbers, 10, 10), (CPoint{5, 310}));
  const struct {
    UINT timeScan, i;
    const char* text;
  } kTexts[] = {{100, 0, "0"},  {100, 10, "10"}, {1000, 10, "100"}, {30, 3, "0.9"},
                {10, 3, "0.3"}, {33, 1, "0.33"}, {0, 10, "0"},      {4294967295U, 10, "4.294967e+08"}};
  for (const auto& row : kTexts) EXPECT_EQ(HorizText(row.timeScan, 100, 10, row.i).Std(), row.text);
}

TEST(TrendGeometry, TheValueAxisRunsFromTheBottomUp) {
  const CVertBands bands = VertBandsOf(CRect::Of({440, 16}, {55, 400}));
  EXPECT_EQ(bands.ticks, (CRect{440, 16, 451, 416}));
  EXPECT_EQ(bands.numbers, (CRect{451, 16, 495, 416}));
  EXPECT_EQ(VertTick(bands.ticks, 10, 1), 376);
  EXPECT_EQ(VertNumber(bands.numbers, 10, 0), (CRect{451, 403, 495, 431}));
  EXPECT_EQ(VertNumber(bands.numbers, 10, 10), (CRect{451, 3, 495, 31}));
  const struct {
    CScale scale;
    UINT i;
    const char* text;
  } kTexts[] = {{{0, 0}, 0, "0"},     {{0, 0}, 10, "0"},   {{0, 1}, 3, "0.3"},
                {{-40, 0}, 1, "-36"}, {{-40, 0}, 10, "0"}, {{0, 1e9}, 10, "1e+09"}};
  for (const auto& row : kTexts) EXPECT_EQ(VertText(row.scale, 10, row.i).Std(), row.text);
}

TEST(TrendGeometry, AClickOnTheLegendFindsTheItemBesideIt) {
  const CRect frame = CRect::Of({517, 16}, {106, 327});  // rows of 16
  EXPECT_EQ(LegendItem(frame, 20, 0), (CPoint{517, 24}));
  EXPECT_EQ(LegendItem(frame, 20, 3), (CPoint{517, 72}));
  const struct {
    CPoint point;
    int item;  // of three
  } kCases[] = {{{520, 16}, 0},  {{520, 24}, 0},   {{520, 39}, 0},  {{520, 40}, 1},  {{622, 71}, 2},
                {{520, 72}, -1}, {{520, 342}, -1}, {{516, 30}, -1}, {{623, 30}, -1}, {{520, 15}, -1}};
  for (const auto& row : kCases)
    EXPECT_EQ(LegendItemOnPoint(frame, 20, 3, row.point), row.item) << row.point.y;
  EXPECT_EQ(LegendItemOnPoint(frame, 0, 3, {520, 30}), -1);
  EXPECT_EQ(LegendItemOnPoint(CRect::Of({0, 0}, {9, 9}), 20, 3, {5, 5}), -1);
  EXPECT_EQ(ItemPartsOf({76, 16}).square, (CRect{5, 4, 20, 16}));
  EXPECT_EQ(ItemPartsOf({76, 2}).square, (CRect{5, 2, 20, 4}));
  EXPECT_EQ(ItemPartsOf({76, 16}).text, (CRect{25, 4, 71, 16}));
}

TEST(SimpleColor, FourteenColoursThenTheFirstAgain) {
  UINT position = CSimpleColor::GetFirstPosition();
  for (const COLORREF colour :
       {0xFA5A5A, 0x5AFA5A, 0xFAFA5A, 0x5A5AFA, 0xFA5AFA, 0x5AFAFA, 0xA00000, 0x00A000, 0xA0A000, 0x0000A0,
        0xA000A0, 0x00A0A0, 0xA0A0A0, 0x5A5A5A, 0xFA5A5A})
    EXPECT_EQ(CSimpleColor::GetNextColor(position), colour);
}

TEST(NumberText, OnlyAWholeFiniteNumberIsOne) {
  const struct {
    const char* text;
    double value;  // NaN: none
  } kCases[] = {{"5", 5},     {" -1.5\t", -1.5}, {"+2e3", 2000}, {".5", 0.5},  {"", NAN},
                {" ", NAN},   {"x", NAN},        {"1,5", NAN},   {"1 2", NAN}, {"1e999", NAN},
                {"inf", NAN}, {"nan", NAN},      {"+-5", NAN},   {"+", NAN},   {"5x", NAN}};
  for (const auto& row : kCases) {
    double value = NAN;
    EXPECT_EQ(ParseNumber(row.text, value), !std::isnan(row.value)) << row.text;
    if (!std::isnan(row.value)) {
      EXPECT_EQ(value, row.value);
    }
  }
}

}  // namespace
}  // namespace vastra
