#include "vastra/platform/time.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vastra {
namespace {

// The local time zone of the process, for as long as it lives.
class CZone {
 public:
  explicit CZone(const char* zone) {
    if (const char* before = std::getenv("TZ")) m_before = before;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~CZone() {
    if (m_before.empty())
      ::unsetenv("TZ");
    else
      ::setenv("TZ", m_before.c_str(), 1);
    ::tzset();
  }

 private:
  std::string m_before;
};

TEST(Time, TheRecordTellsZoneAndDaylightSaving) {
  struct CCase {
    const char* zone;
    int timezone, dstflag;
  };
  for (const CCase& c : {CCase{"UTC0", 0, 0}, CCase{"AAA5", 300, 0}, CCase{"AAA-5:45", -345, 0},
                         CCase{"AAA3BBB,0/0,J365/25", 180, 1}}) {
    const CZone zone(c.zone);
    const std::time_t before = std::time(nullptr);
    _timeb now;
    now.padding = 7;
    _ftime(now);
    EXPECT_EQ(c.timezone, now.timezone) << c.zone;
    EXPECT_EQ(c.dstflag, now.dstflag) << c.zone;
    EXPECT_EQ(0, now.padding);
    EXPECT_LT(now.millitm, 1000);
    EXPECT_LE(before, now.time);
    EXPECT_GE(std::time(nullptr), now.time);
  }
}

TEST(Time, AnInstalledClockIsAskedUntilItIsTakenBack) {
  struct CFixed : CClock {
    _timeb Now() override { return {1, 2, 3, 4, 5}; }
  } fixed;
  EXPECT_EQ(nullptr, SetClock(&fixed));
  _timeb now;
  _ftime(now);
  EXPECT_EQ((_timeb{1, 2, 3, 4, 5}), now);
  EXPECT_EQ(&fixed, SetClock(nullptr));
  _ftime(now);
  EXPECT_LT(1, now.time);
}

}  // namespace
}  // namespace vastra
