// The time axis and the value axes of a chart, without a window.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "vastra/charts/time_axis_geometry.h"
#include "vastra/charts/value_axis_geometry.h"

namespace vastra {
namespace {

constexpr CMoment kSec = 1000, kMin = 60 * kSec, kHours = 60 * kMin, kDays = 24 * kHours;
constexpr CMoment kNoon = 1772362800 * kSec;    // 2026-03-01 11:00 UTC, 12:00 in Berlin
constexpr CMoment kSpring = 1774746000 * kSec;  // 2026-03-29 01:00 UTC: 02:00 becomes 03:00 in Berlin
constexpr CMoment kAutumn = 1792890000 * kSec;  // 2026-10-25 01:00 UTC: 03:00 becomes 02:00 in Berlin
constexpr CMoment kHowe = 1775314800 * kSec;    // 2026-04-04 15:00 UTC: half an hour back on Lord Howe Island

void UseZone(const char* zone) {
  ::setenv("TZ", zone, 1);
  ::tzset();
}

// The texts of an axis, then those below with the place of each in minutes from the beginning, then the zone.
std::string Texts(CMoment from, CMoment length, double width, bool isUtc = false) {
  const CTimeAxis axis = TimeAxisOf({from, from + length}, CChartClock(isUtc), width);
  std::string text;
  for (const CTimeTick& tick : axis.ticks) text += tick.text.Std() + " ";
  for (const CTimeTick& tick : axis.contexts)
    text += "| " + std::to_string((tick.moment - from) / kMin) + ": " + tick.text.Std() + " ";
  return text + "| " + axis.zone.Std();
}

TEST(TimeAxis, TicksAreAtRoundTimesOfTheClock) {
  const struct {
    const char* zone;
    CMoment from, length;
    double width;
    const char* texts;
  } kCases[] = {
      {"Europe/Berlin", kNoon - 1, 20, 80,
       "12:00:00.000 12:00:00.005 12:00:00.010 12:00:00.015 | 0: Sun 2026-03-01 | CET, UTC+1"},
      {"Europe/Berlin", kNoon - kSec, 20 * kSec, 50,
       "12:00:00 12:00:05 12:00:10 12:00:15 | 0: Sun 2026-03-01 | CET, UTC+1"},
      {"Europe/Berlin", kNoon - 14 * kHours, kDays, 50,
       "00:00 06:00 12:00 18:00 | 0: Sat 2026-02-28 | 120: Sun 2026-03-01 | CET, UTC+1"},
      {"Europe/Berlin", kSpring - 2 * kHours, 4 * kHours, 50,
       "00:00 01:00 03:00 04:00 | 0: Sun 2026-03-29 | 120: CEST, UTC+2 | CET, UTC+1 / CEST, UTC+2"},
      {"Europe/Berlin", kAutumn - 2 * kHours, 4 * kHours, 50,
       "01:00 02:00 02:00 03:00 | 0: Sun 2026-10-25 | 120: CET, UTC+1 | CEST, UTC+2 / CET, UTC+1"},
      {"Europe/Berlin", kAutumn - kHours - kMin, kHours + 2 * kMin, 24,
       "02:00 02:30 02:00 | 0: Sun 2026-10-25 | 61: CET, UTC+1 | CEST, UTC+2 / CET, UTC+1"},
      {"Europe/Berlin", kSpring - 27 * kHours, 3 * kDays, 40,
       "Mar 28 Mar 29 Mar 30 | 0: 2026 | CET, UTC+1 / CEST, UTC+2"},
      {"Europe/Berlin", kNoon, 40 * kDays, 60,
       "Mar 2 Mar 9 Mar 16 Mar 23 Mar 30 Apr 6 | 0: 2026 | CET, UTC+1 / CEST, UTC+2"},
      {"Europe/Berlin", kNoon - 80 * kDays, 120 * kDays, 40,
       "Jan Feb Mar Apr | 0: 2025 | 29520: 2026 | CET, UTC+1 / CEST, UTC+2"},
      {"Europe/Berlin", kNoon, 2000 * kDays, 50, "2027 2028 2029 2030 2031 | CET, UTC+1 / CEST, UTC+2"},
      {"Australia/Lord_Howe", kHowe - kHours, 2 * kHours, 50,
       "01:00 01:30 01:30 02:00 | 0: Sun 2026-04-05 | 60: UTC+10:30 | UTC+11 / UTC+10:30"},
      {"America/Sao_Paulo", 1541300400 * kSec - 30 * kHours, 3 * kDays, 40,  // no midnight on 2018-11-04
       "Nov 3 Nov 4 Nov 5 | 0: 2018 | UTC-3 / UTC-2"},
      {"Asia/Kolkata", -1500 * kDays, kDays, 30,
       "12:00 00:00 | 0: Tue 1965-11-23 | 1110: Wed 1965-11-24 | IST, UTC+5:30"},
  };
  for (const auto& row : kCases) {
    UseZone(row.zone);
    EXPECT_EQ(Texts(row.from, row.length, row.width), row.texts) << row.zone << " " << row.from;
  }
  EXPECT_EQ(Texts(kSpring - 2 * kHours, 4 * kHours, 50, true),
            "23:00 00:00 01:00 02:00 | 0: Sat 2026-03-28 | 60: Sun 2026-03-29 | UTC");
  UseZone("Europe/Berlin");
  EXPECT_EQ(CChartClock().Text(kSpring - 750), "2026-03-29 01:59:59.250 CET");
  EXPECT_EQ(CChartClock().Text(kSpring), "2026-03-29 03:00:00.000 CEST");
  EXPECT_EQ(CChartClock(true).Text(kSpring), "2026-03-29 01:00:00.000 UTC");
  UseZone("UTC");
}

// In any range, ticks are in their order and within it, and there is room for each text.
TEST(TimeAxis, NeitherTooManyTicksNorTooFew) {
  UseZone("Europe/Berlin");
  for (double length = 10; length < 6e12; length *= 1.37)
    for (const CMoment from : {kSpring - 1000, kAutumn - 7777777, kNoon}) {
      const CMomentRange range = {from - static_cast<CMoment>(length / 3),
                                  from + static_cast<CMoment>(length)};
      const CTimeAxis axis = TimeAxisOf(range, CChartClock(), 120);
      ASSERT_GE(axis.ticks.size(), length > 1e12 ? 1U : 2U) << length;
      ASSERT_LE(axis.ticks.size(), 20U) << length;
      for (std::size_t i = 0; i < axis.ticks.size(); ++i) {
        EXPECT_TRUE(range.Has(axis.ticks[i].moment));
        EXPECT_TRUE(i == 0 || axis.ticks[i - 1].moment < axis.ticks[i].moment) << length;
      }
    }
  UseZone("UTC");
}

TEST(TimeAxis, SpansAreInUnitsOfPeople) {
  const std::pair<CMoment, const char*> kSpans[] = {{0, "0 ms"},
                                                    {-999, "-999 ms"},
                                                    {4250, "4.25 s"},
                                                    {kHours + 5 * kMin + 30 * kSec, "1 h 5 min 30 s"},
                                                    {kDays, "1 d 0 h 0 min 0 s"},
                                                    {-kMin - 1, "-1 min 0.001 s"}};
  for (const auto& [span, text] : kSpans) EXPECT_EQ(SpanText(span), text);
}

TEST(ValueAxis, TicksAreRoundAndTheirTextsTellThemApart) {
  const struct {
    CAxisRange range;
    int most;
    const char* texts;
  } kCases[] = {
      {{0, 1}, 5, "0.0 0.2 0.4 0.6 0.8 1.0"},
      {{-0.7, 0.7}, 4, "-0.5 0.0 0.5"},
      {{850, 890}, 4, "850 860 870 880 890"},
      {{0, 1e9}, 4, "0 5e+08 1e+09"},
      {{0, 3e-9}, 3, "0 1e-09 2e-09 3e-09"},
      {{16777210, 16777216}, 3, "16777210 16777212 16777214 16777216"},
      {{-0.02, 0.02}, 4, "-0.02 -0.01 0.00 0.01 0.02"},
  };
  for (const auto& row : kCases) {
    std::string texts;
    for (const CValueTick& tick : ValueTicks(row.range, row.most))
      texts += (texts.empty() ? "" : " ") + tick.text.Std();
    EXPECT_EQ(texts, row.texts) << row.range.low;
  }
}

TEST(ValueAxis, AFittedRangeHasAllValuesAndIsNotMuchLarger) {
  const std::pair<double, double> kExtremes[] = {
      {0, 100},          {-1, 1},        {5, 5},    {0, 0}, {-3, -3}, {1e30, 1.0000001e30},
      {-3.4e38, 3.4e38}, {1e-40, 2e-40}, {848, 852}};
  for (const auto& [least, greatest] : kExtremes) {
    const CAxisRange range = FittedRange(least, greatest);
    EXPECT_LE(range.low, least);
    EXPECT_GE(range.high, greatest);
    EXPECT_LT(range.low, range.high) << least;
    if (least < greatest) {
      EXPECT_LT(range.Span(), 1.3 * (greatest - least)) << least;
    }
    EXPECT_LT(ValueTicks(range, 8).size(), 10U);
  }
  EXPECT_EQ(FittedRange(0, 100).low, 0) << "an axis does not go below 0 for its padding";
  const CAxisRange odd[] = {{1, 1}, {2, -2}, {NAN, 1}, {-INFINITY, INFINITY}, {1e30, 1e30}};
  for (const CAxisRange& range : odd) {
    const CAxisRange drawn = DrawableRange(range);
    EXPECT_TRUE(std::isfinite(drawn.Span()) && drawn.Span() > 0) << range.low;
  }
}

}  // namespace
}  // namespace vastra
