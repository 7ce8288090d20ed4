// The text copy of a log is what printf and ctime would write.
#include "vastra/logfiles/csv_format.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "tests/support/files.h"

namespace vastra {
namespace {

std::string Text(float value) {
  char text[kMaxFloatText];
  return {text, static_cast<std::size_t>(PutFloat(text, value) - text)};
}

std::string Printed(float value) {
  char text[kMaxFloatText + 1];
  std::snprintf(text, sizeof text, "%f,", static_cast<double>(value));
  return text;
}

TEST(CsvFloat, EveryFloatReadsAsPrintfWritesIt) {
  std::mt19937 random(1);
  for (int i = 0; i < 300'000; ++i) {
    const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    ASSERT_EQ(Printed(value), Text(value)) << std::bit_cast<std::uint32_t>(value);
  }
}

// The places where a carry, a tie, a new digit or a wider integer could go wrong, and the floats beside them.
TEST(CsvFloat, TheEdgesReadAsPrintfWritesThem) {
  std::vector<float> edges = {0.0f, 0.9999995f, 9.9999995f, 999.9999995f, 16777216.0f, INFINITY, NAN};
  for (int i = 0; i < 64; ++i) edges.push_back((static_cast<float>(i) + 0.5f) / 64e6f * 64);  // near ties
  for (int i = 1; i < 128; i += 2) edges.push_back(static_cast<float>(i) / 128);              // ties: 2^-7
  for (int power = -40; power <= 38; ++power) edges.push_back(std::pow(10.0f, static_cast<float>(power)));
  for (int power = -149; power <= 127; ++power) edges.push_back(std::ldexp(1.0f, power));
  edges.push_back(std::numeric_limits<float>::max());
  for (const float edge : edges)
    for (const float value : {edge, std::nextafter(edge, INFINITY), std::nextafter(edge, -INFINITY)}) {
      ASSERT_EQ(Printed(value), Text(value));
      ASSERT_EQ(Printed(-value), Text(-value));
    }
}

// The time text made afresh for each sample.
std::string Made(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char clock[64], year[16];
  std::strftime(clock, sizeof clock, "%a %b %d %H:%M:%S", &local);
  std::strftime(year, sizeof year, "%Y", &local);
  return std::string(clock) + ":" + std::to_string(time.millitm) + "  " + year + ",";
}

struct CZoneCase {
  const char* zone;
  std::int32_t from, step;  // seconds
};
constexpr CZoneCase kZones[] = {
    {"UTC0", 1041516000, 7},
    {"UTC0", INT32_MIN, 1021},
    {"UTC0", INT32_MAX - 3'000'000, 1021},
    {"UTC0", -86400, 61},  // through 1970
    {"CET-1CEST,M3.5.0,M10.5.0/3", 1017532800, 59},
    {"CET-1CEST,M3.5.0,M10.5.0/3", 1035676800, 59},
    {"X-5:45", 1041516000, 301},
    {"X-0:53:28", 1041516000, 13},                    // quarters that end in another hour
    {"A0B-0:30,J60/2:07,J300/2:07", 1046484000, 11},  // an offset that changes within a quarter
    {"right/Europe/Berlin", 1136073600, 1},           // a leap second
};

TEST(CsvTime, FollowsTheLocalClockSecondBySecond) {
  for (const CZoneCase& zone : kZones) {
    ::setenv("TZ", zone.zone, 1);
    ::tzset();
    CTimeText text;
    std::int64_t seconds = zone.from;
    for (int i = 0; i < 3000 && seconds <= INT32_MAX; ++i, seconds += zone.step) {
      const _timeb time = {.time = static_cast<std::int32_t>(seconds),
                           .millitm = static_cast<std::uint16_t>(i * 37 % 1000)};
      char bytes[kMaxTimeText];
      ASSERT_EQ(Made(time), std::string(bytes, text.Put(bytes, time))) << zone.zone << " " << seconds;
    }
  }
}

}  // namespace
}  // namespace vastra
