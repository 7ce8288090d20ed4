// The text copy of a log equals the output of printf and strftime.
#include "vastra/logfiles/csv_format.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

#include "tests/support/names.h"
#include "vastra/logfiles/csv_reader.h"

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
  std::vector<float> edges = {0.9999995f, 9.9999995f, 999.9999995f, NAN, 3.402823466e38f};
  for (float i = 0; i < 128; ++i) edges.insert(edges.end(), {(i + 0.5f) / 1e6f, i / 128});
  for (float power = -149; power <= 128; ++power)
    edges.insert(edges.end(), {std::exp2(power), std::pow(10.0f, power)});
  for (const float edge : edges)
    for (const float value : {edge, std::nextafter(edge, INFINITY), std::nextafter(edge, -INFINITY)})
      values.insert(values.end(), {value, -value});
  char text[kMaxFloatText];
  for (const float value : values)
    ASSERT_EQ(std::string(text, PutFloat(text, value)), Printed(value)) << std::hexfloat << value;
}

std::string Made(const _timeb& time) {
  const std::tm local = CTime(time.time).GetLocalTm();
  char text[64];
  const std::string millis = std::to_string(time.millitm);
  return {text, std::strftime(text, sizeof text, ("%a %b %d %H:%M:%S:" + millis + "  %Y,").c_str(), &local)};
}

TEST(CsvTime, FollowsTheLocalClockSecondBySecond) {
  constexpr struct {
    const char* zone;
    std::int32_t from, step;  // seconds
  } kZones[] = {
      {"UTC0", INT32_MIN, 1021},
      {"UTC0", INT32_MAX - 3'000'000, 1021},
      {"UTC0", -86400, 61},  // through 1970
      {"CET-1CEST,M3.5.0,M10.5.0/3", 1035676800, 59},
      {"LMT-0:53:28", 1041516000, 13},                      // quarters that end in another hour
      {"AAA0BBB-0:30,J60/2:07,J300/2:07", 1046484000, 11},  // an offset that changes within a quarter
      {"AAA0BBB-1,J60/2:07,J300/2:07", 1046484000, 11},     // by an hour
      {"right/Europe/Berlin", 1136073600, 1},               // a leap second
  };
  for (const auto& [zone, from, step] : kZones) {
    ::setenv("TZ", zone, 1);
    ::tzset();
    CTimeText text;
    std::int64_t seconds = from;
    for (int i = 0; i < 3000 && seconds <= INT32_MAX; ++i, seconds += step) {
      const _timeb time = {.time = static_cast<std::int32_t>(seconds),
                           .millitm = static_cast<std::uint16_t>(i * 37 % 1000)};
      char bytes[kMaxTimeText];
      ASSERT_EQ(std::string(bytes, text.Put(bytes, time)), Made(time)) << zone << " " << seconds;
    }
  }
}

// The text is longer than the buffer of the file, and some lines are longer than the memory reserved at a
// time.
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

TEST(CsvLog, IsReadBackUpToTheFirstByteThatIsNotItsOwn) {
  constexpr float kValues[] = {0,       -0.0f, NAN,      -NAN, INFINITY,   -INFINITY,
                               3.4e38f, 1e-7f, 16777216, 0.1f, -8.0000005f};
  ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  ::tzset();
  const CStringArray names = Names({"x", "y"});
  CSampleStore samples;
  for (int i = 0; i < 40; ++i) {
    CLogSample sample;
    sample.m_time = {.time = 1035676800 + 600 * i,
                     .millitm = static_cast<std::uint16_t>(i * 25)};  // an hour twice
    for (int v = 0; v < 2; ++v)
      sample.m_values.Add(kValues[static_cast<std::size_t>(i + v) % std::size(kValues)]);
    samples.Append(sample);
  }
  CCsvText text;
  CMemFile file;
  WriteCsv(file, names, samples, text);
  const std::string whole = file.Bytes();
  const auto read = [&](const std::string& bytes, std::uint64_t lines) {
    CMemFile changed(bytes);
    CSampleStore own;
    EXPECT_EQ(ReadCsv(changed, names, own), lines);
    return own.GetCount();
  };
  EXPECT_EQ(read(whole, 40), 40u);
  for (std::size_t i = 0; i + 1 < whole.size(); ++i) {
    const auto line =
        static_cast<std::size_t>(std::count(whole.begin(), whole.begin() + static_cast<long>(i), '\n'));
    std::string other = whole;
    other[i] = whole[i] == '\n' ? '7' : '\n' + 1;
    EXPECT_EQ(read(other, whole[i] == '\n' ? 39 : 40), line ? line - 1 : 0) << i;
  }
}

}  // namespace
}  // namespace vastra
