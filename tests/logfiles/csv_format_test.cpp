// The text copy of a log equals the output of printf and strftime.
#include "vastra/logfiles/csv_format.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "tests/support/files.h"
#include "tests/support/names.h"

namespace vastra {
namespace {

std::string Printed(float value) {
  char text[kMaxFloatText + 1];
  std::snprintf(text, sizeof text, "%f,", static_cast<double>(value));
  return text;
}

TEST(CsvFloat, EqualsPrintf) {
  std::vector<float> values;
  std::mt19937 random(1);
  for (int i = 0; i < 300'000; ++i)
    values.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
  // Carries, ties, new digits and wider integers, and the floats next to them.
  std::vector<float> edges = {0.0f, 0.9999995f, 9.9999995f, 999.9999995f, INFINITY, NAN, 3.402823466e38f};
  for (int i = 0; i < 64; ++i) edges.push_back((static_cast<float>(i) + 0.5f) / 1e6f);
  for (int i = 1; i < 128; i += 2) edges.push_back(static_cast<float>(i) / 128);
  for (int power = -40; power <= 38; ++power) edges.push_back(std::pow(10.0f, static_cast<float>(power)));
  for (int power = -149; power <= 127; ++power) edges.push_back(std::ldexp(1.0f, power));
  for (const float edge : edges)
    for (const float value : {edge, std::nextafter(edge, INFINITY), std::nextafter(edge, -INFINITY)})
      values.insert(values.end(), {value, -value});
  char text[kMaxFloatText];
  for (const float value : values)
    ASSERT_EQ(std::string(text, PutFloat(text, value)), Printed(value)) << std::hexfloat << value;
}

std::string Made(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char clock[64], year[16];
  std::strftime(clock, sizeof clock, "%a %b %d %H:%M:%S", &local);
  std::strftime(year, sizeof year, "%Y", &local);
  return std::string(clock) + ":" + std::to_string(time.millitm) + "  " + year + ",";
}

TEST(CsvTime, FollowsTheLocalClockSecondBySecond) {
  constexpr struct {
    const char* zone;
    std::int32_t from, step;  // seconds
  } kZones[] = {
      {"UTC0", INT32_MIN, 1021},
      {"UTC0", INT32_MAX - 3'000'000, 1021},
      {"UTC0", -86400, 61},  // through 1970
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1017532800, 59},
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1035676800, 59},
      {"XXX-5:45", 1041516000, 301},
      {"XXX-0:53:28", 1041516000, 13},                      // quarters that end in another hour
      {"AAA0BBB-0:30,J60/2:07,J300/2:07", 1046484000, 11},  // an offset that changes within a quarter
      {"AAA0BBB-1,J60/2:07,J300/2:07", 1046484000, 11},     // by an hour
      {"right/Europe/Berlin", 1136073600, 1},               // a leap second
  };
  for (const auto& zone : kZones) {
    ::setenv("TZ", zone.zone, 1);
    ::tzset();
    CTimeText text;
    std::int64_t seconds = zone.from;
    for (int i = 0; i < 3000 && seconds <= INT32_MAX; ++i, seconds += zone.step) {
      const _timeb time = {.time = static_cast<std::int32_t>(seconds),
                           .millitm = static_cast<std::uint16_t>(i * 37 % 1000)};
      char bytes[kMaxTimeText];
      ASSERT_EQ(std::string(bytes, text.Put(bytes, time)), Made(time)) << zone.zone << " " << seconds;
    }
  }
}

// The text is longer than the buffer through which it is written, and some lines are longer than the memory
// reserved at a time. The blocks of the store are small, too.
TEST(CsvLog, LosesNoLineBetweenTwoBuffers) {
  CSampleStore samples(50);
  std::string expected = "TimeStamp,x,\n";
  for (int i = 0; i < 6000; ++i) {
    CLogSample sample;
    sample.m_time.time = kStart + i;
    for (int v = 0; v < (i % 1000 ? i % 3 : 3000); ++v) sample.m_values.Add(static_cast<float>(i + v));
    samples.Append(sample);
    expected += Made(sample.m_time);
    for (const float value : sample.m_values) expected += Printed(value);
    expected += "\n";
  }
  CCsvText text;
  for (int time = 0; time < 2; ++time) {
    CMemFile file;
    WriteCsv(file, Names({"x"}), samples, text);
    EXPECT_TRUE(file.Bytes() == expected) << file.Bytes().size() << " bytes of " << expected.size();
  }
}

}  // namespace
}  // namespace vastra
