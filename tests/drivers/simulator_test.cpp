// The simulator through the links of the engine.
#include <chrono>
#include <cmath>
#include <thread>

#include "tests/drivers/driver_node.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
constexpr int kSimulator = 9001;
constexpr UINT kWrite = CLink::modeWrite;

class Simulator : public testing::Test {
 protected:
  CDriverNode Node(const DriverConfig& config, UINT count, UINT mode = CLink::modeRead) {
    return CDriverNode(m_recorder, kSimulator, config, count, mode);
  }
  static DriverConfig Waves(const char* waves, int period = 0, int amplitude = 0, int seed = 0) {
    DriverConfig config;
    config.text1 = waves;
    config.value1 = period;
    config.value2 = amplitude;
    config.value3 = seed;
    return config;
  }
  static DriverConfig Station(int station, int firstRegister) {
    DriverConfig config;
    config.station = station;
    config.registerAddress = firstRegister;
    return config;
  }
  CRecorder m_recorder;
};

TEST_F(Simulator, GivesEachValueItsWaveformFromTheListOverAndOver) {
  CDriverNode node = Node(Waves(" constant ,\tcounter,square", 0, 2500), 5);
  EXPECT_EQ(node.Read(), (CValues{2.5f, 1, 2.5f, 2.5f, 1}));
  EXPECT_EQ(node.Read(), (CValues{2.5f, 2, 2.5f, 2.5f, 2}));
}

TEST_F(Simulator, StandsOnItsDefaultsWhenNothingIsSet) {
  for (const char* text : {"", "  "}) {
    const auto begin = std::chrono::steady_clock::now();
    CDriverNode sine = Node(Waves(text), 1), constant = Node(Waves("constant"), 1);
    EXPECT_EQ(constant.Read(), CValues{1});
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const double periods = sine.Read().at(0) / 6.283185;  // at most, as sin(x) <= x
    EXPECT_LE(periods * std::chrono::seconds(10), std::chrono::steady_clock::now() - begin);
  }
}

TEST_F(Simulator, RunsItsCurvesThroughWholePeriodsInStep) {
  CDriverNode node = Node(Waves("sine,ramp,square", 40, 2000), 3);
  float lowest = 0, highest = 0;
  bool fell = false;
  float before = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while ((lowest > -1.9f || highest < 1.9f || !fell) && std::chrono::steady_clock::now() < end) {
    const CValues values = node.Read();
    const double phase = values[1] / 2.0;
    ASSERT_TRUE(phase >= 0 && phase <= 1) << phase;
    EXPECT_NEAR(2 * std::sin(phase * 6.283185307179586), values[0], 1e-5);
    EXPECT_EQ(values[2], phase < 0.5 ? 2.0f : -2.0f);
    lowest = std::min(lowest, values[0]);
    highest = std::max(highest, values[0]);
    fell |= values[1] < before;
    before = values[1];
  }
  EXPECT_TRUE(lowest <= -1.9f && highest >= 1.9f && fell) << lowest << ' ' << highest;
}

TEST_F(Simulator, MakesTheSameNoiseOfTheSameSeedAlone) {
  CDriverNode a = Node(Waves("noise", 0, 3000, 7), 2), b = Node(Waves("noise", 0, 3000, 7), 2),
              other = Node(Waves("noise", 0, 3000, 8), 2);
  double sum = 0;
  for (int i = 0; i < 1000; ++i) {
    const CValues values = a.Read();
    EXPECT_EQ(b.Read(), values);
    EXPECT_NE(values, other.Read());
    EXPECT_NE(values[0], values[1]);
    EXPECT_TRUE(std::abs(values[0]) <= 3 && std::abs(values[1]) <= 3);
    sum += values[0] + values[1];
  }
  EXPECT_LT(std::abs(sum / 2000), 0.2) << "five times the deviation of the mean";
}

TEST_F(Simulator, SharesTheRegistersOfAStationAndOfNoOther) {
  CDriverNode reader = Node(Station(1, 10), 3), early = Node(Station(1, 8), 3),
              other = Node(Station(22, 10), 3);
  CDriverNode writer = Node(Station(1, 10), 3, kWrite);
  EXPECT_EQ(reader.Read(), (CValues{0, 0, 0}));
  EXPECT_TRUE(writer.Write({1.5f, -2, 3}));
  EXPECT_EQ(reader.Read(), (CValues{1.5f, -2, 3}));
  EXPECT_EQ(early.Read(), (CValues{0, 0, 1.5f}));
  EXPECT_EQ(other.Read(), (CValues{0, 0, 0}));
}

TEST_F(Simulator, FailsEachNthCallAsToldAndRecoversInTheNext) {
  DriverConfig config = Waves("counter");
  config.value4 = 3;
  const struct {
    int status;
    const char* fault;
  } kCases[] = {
      {statusTimeout, "Error Not named Timeout error.\n"},
      {statusExtendedError, "Error Not named Simulator: call 6 fails, as value4 = 3 asks.\n"},
      {statusReplyError, "Error Not named Simulator: call 6 fails, as value4 = 3 asks.\n"},
      {0, "Error Not named Unknown error.\n"},
      {-1, "Error Not named Unknown error.\n"},
  };
  for (const auto& row : kCases) {
    config.value5 = row.status;
    CDriverNode node = Node(config, 1), untouched = Node(Waves("counter"), 1);
    EXPECT_EQ(node.Read(), CValues{1});
    EXPECT_TRUE(node.Write({0}));
    EXPECT_EQ(node.Read(), CValues{});
    EXPECT_EQ(node.Read(), CValues{3});
    EXPECT_EQ(node.Read(), CValues{4});
    EXPECT_FALSE(node.Write({0}));
    EXPECT_EQ(node.Fault(), std::string("Write ") + row.fault);
    EXPECT_EQ(node.Read(), CValues{5});
    EXPECT_EQ(untouched.Read(), CValues{1});
  }
}

struct CBadSetting {
  int DriverConfig::*number;
  int value;
  const char* waves;
  const char* words;
};
constexpr CBadSetting kBadSettings[] = {
    {&DriverConfig::value1, -5, "", "value1 is negative: -5"},
    {&DriverConfig::value2, -1, "", "value2 is negative: -1"},
    {&DriverConfig::value3, -1, "", "value3 is negative: -1"},
    {&DriverConfig::value4, -2147483647 - 1, "", "value4 is negative: -2147483648"},
    {&DriverConfig::station, -1, "", "station is negative: -1"},
    {&DriverConfig::registerAddress, -1, "", "registerAddress is negative: -1"},
    {&DriverConfig::registerAddress, 1048575, "",
     "registerAddress is too high: the registers of a station end at 1048575"},
    {&DriverConfig::registerAddress, 2147483647, "",
     "registerAddress is too high: the registers of a station end at 1048575"},
    {&DriverConfig::value1, 0, "sine, cosine", "text1 has an unknown waveform: \"cosine\""},
    {&DriverConfig::value1, 0, "Sine", "text1 has an unknown waveform: \"Sine\""},
    {&DriverConfig::value1, 0, "ramp,", "text1 has an unknown waveform: \"\""},
    {&DriverConfig::value1, 0, ",ramp", "text1 has an unknown waveform: \"\""},
};

TEST_F(Simulator, RefusesABadSettingAndSaysWhich) {
  for (const CBadSetting& bad : kBadSettings) {
    DriverConfig config = Waves(bad.waves);
    config.station = 1;
    config.*bad.number = bad.value;
    EXPECT_EQ(Node(config, 2).Fault(), std::string("Open Fatal Not named Simulator: ") + bad.words + "\n");
  }
  const std::string kept(59, 'x');
  EXPECT_EQ("Open Fatal Not named Simulator: text1 has an unknown waveform: \"" + kept + "...\"\n",
            Node(Waves((kept + "\u20AC and more").c_str()), 1).Fault());
  EXPECT_EQ(Node({}, 1, 7).Fault(), "Open Fatal Not named Invalid mode.\n");
  EXPECT_EQ(Node(Station(23, 1048574), 2).Fault(), "");
}

TEST_F(Simulator, NeverShowsAHalfWrittenScanToAnotherThread) {
  constexpr UINT kCount = 20000;  // a copy that takes long enough to be interrupted
  CDriverNode reader = Node(Station(24, 0), kCount), writer = Node(Station(24, 0), kCount, kWrite);
  const std::jthread writing([&writer] {
    for (int i = 1; i <= 300; ++i) writer.Write(CValues(kCount, static_cast<float>(i)));
  });
  for (int i = 0; i < 300; ++i) {
    const CValues values = reader.Read();
    ASSERT_TRUE(values == CValues(kCount, values.at(0)));
  }
}

}  // namespace
}  // namespace vastra
