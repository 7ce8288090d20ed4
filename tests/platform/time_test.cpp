#include "vastra/platform/time.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vastra {
namespace {

TEST(Time, FtimeHasTheZoneAndDaylightSaving) {
  const struct {
    const char* zone;
    int minutesWest, isDaylight;
  } cases[] = {{"AAA5", 300, 0}, {"AAA-5:45", -345, 0}, {"AAA3BBB,0/0,J365/25", 180, 1}, {"UTC0", 0, 0}};
  for (const auto& c : cases) {
    ::setenv("TZ", c.zone, 1);
    ::tzset();
    const std::time_t before = std::time(nullptr);
    _timeb now;
    now.padding = 7;
    _ftime(now);
    EXPECT_EQ(now.timezone, c.minutesWest) << c.zone;
    EXPECT_EQ(now.dstflag, c.isDaylight) << c.zone;
    EXPECT_EQ(now.padding, 0);
    EXPECT_LT(now.millitm, 1000);
    EXPECT_GE(now.time, before);
    EXPECT_LE(now.time, std::time(nullptr));
  }
}

TEST(Time, AnInstalledClockIsUsedUntilItIsRemoved) {
  struct CFixed : CClock {
    _timeb Now() override { return {1, 2, 3, 4, 5}; }
  } fixed;
  _timeb now;
  EXPECT_EQ(SetClock(&fixed), nullptr);
  _ftime(now);
  EXPECT_EQ(now, (_timeb{1, 2, 3, 4, 5}));
  EXPECT_EQ(SetClock(nullptr), &fixed);
  _ftime(now);
  EXPECT_GT(now.time, 1);
}

}  // namespace
}  // namespace vastra
