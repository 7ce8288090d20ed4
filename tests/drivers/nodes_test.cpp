#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "tests/drivers/driver_node.h"
#include "tests/support/files.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
using std::chrono::steady_clock;
constexpr UINT kWrite = CLink::modeWrite;

DriverConfig Text(const CString& text, int value1 = 0, int value2 = 0, int value3 = 0, int value4 = 0,
                  int value5 = 0) {
  return {0, 0, 0, 0, 0, 0, 0, 0, 0, text, "", value1, value2, value3, value4, value5};
}
DriverConfig Station(int station, int first) {
  return {.station = station, .registerAddress = first, .text1 = "", .text2 = ""};
}

template <int kDriver>
class CNodes : public testing::Test {
 protected:
  CDriverNode Node(const DriverConfig& config, UINT count, UINT mode = CLink::modeRead) {
    return CDriverNode(m_recorder, kDriver, config, count, mode);
  }
  CRecorder m_recorder;
};
class Simulator : public CNodes<9001> {};
class GuideDriver : public CNodes<9900> {};

TEST_F(Simulator, RepeatsItsListOfWaveformsAndHasDefaults) {
  CDriverNode node = Node(Text(" constant ,\tcounter,square", 0, 2500), 5);
  EXPECT_EQ(node.Read(), (CValues{2.5f, 1, 2.5f, 2.5f, 1}));
  EXPECT_EQ(node.Read(), (CValues{2.5f, 2, 2.5f, 2.5f, 2}));
  EXPECT_EQ(Node(Text("constant"), 1).Read(), CValues{1});
  for (const char* text : {"", "  "}) {
    const auto begin = steady_clock::now();
    CDriverNode sine = Node(Text(text), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const double periods = sine.Read().at(0) / 6.283185;  // at most, as sin(x) <= x
    EXPECT_LE(periods * std::chrono::seconds(10), steady_clock::now() - begin);
  }
}

TEST_F(Simulator, RunsItsCurvesThroughWholePeriodsInStep) {
  CDriverNode node = Node(Text("sine,ramp,square", 40, 2000), 3);
  double lowest = 1, highest = 0;  // phases
  const auto end = steady_clock::now() + std::chrono::seconds(20);
  while ((lowest > 0.05 || highest < 0.95) && steady_clock::now() < end) {
    const CValues values = node.Read();
    const double phase = values.at(1) / 2.0;
    ASSERT_TRUE(phase >= 0 && phase <= 1) << phase;
    EXPECT_NEAR(values[0], 2 * std::sin(phase * 6.283185307179586), 1e-5);
    EXPECT_EQ(values[2], phase < 0.5 ? 2.0f : -2.0f);
    lowest = highest < 0.95 ? 1 : std::min(lowest, phase);  // of the next period
    highest = std::max(highest, phase);
  }
  EXPECT_TRUE(lowest <= 0.05 && highest >= 0.95) << lowest << ' ' << highest;
}

TEST_F(Simulator, MakesTheSameNoiseOfTheSameSeedAlone) {
  const auto noise = [&](int seed) { return Node(Text("noise", 0, 3000, seed), 2); };
  CDriverNode a = noise(7), b = noise(7), other = noise(8);
  for (int i = 0; i < 1000; ++i) {
    const CValues values = a.Read();
    EXPECT_EQ(b.Read(), values);
    EXPECT_NE(values, other.Read());
    EXPECT_TRUE(values[0] != values[1] && std::abs(values[0]) <= 3 && std::abs(values[1]) <= 3);
  }
}

TEST_F(Simulator, SharesTheRegistersOfAStationAndOfNoOther) {
  CDriverNode reader = Node(Station(1, 10), 3);
  EXPECT_EQ(reader.Read(), (CValues{0, 0, 0}));
  EXPECT_TRUE(Node(Station(1, 10), 3, kWrite).Write({1.5f, -2, 3}));
  EXPECT_EQ(reader.Read(), (CValues{1.5f, -2, 3}));
  EXPECT_EQ(Node(Station(1, 8), 3).Read(), (CValues{0, 0, 1.5f}));
  EXPECT_EQ(Node(Station(22, 10), 3).Read(), (CValues{0, 0, 0}));
}

TEST_F(Simulator, FailsEachNthCallAsToldAndRecoversInTheNext) {
  const std::pair<int, const char*> kFaults[] = {
      {statusTimeout, "Timeout error."},
      {statusExtendedError, "Simulator: call 6 fails because value4 is 3."},
      {statusReplyError, "Simulator: call 6 fails because value4 is 3."},
      {-1, "Unknown error."}};
  for (const auto& [status, fault] : kFaults) {
    CDriverNode node = Node(Text("counter", 0, 0, 0, 3, status), 1);
    EXPECT_EQ(node.Read(), CValues{1});
    EXPECT_TRUE(node.Write({0}));
    EXPECT_EQ(node.Read(), CValues{});
    EXPECT_EQ(node.Read(), CValues{3});
    EXPECT_EQ(node.Read(), CValues{4});
    EXPECT_FALSE(node.Write({0}));
    EXPECT_EQ(node.fault, std::string("Write Error Not named ") + fault + "\n");
    EXPECT_EQ(node.Read(), CValues{5});
  }
}

TEST_F(Simulator, RefusesABadSettingAndSaysWhich) {
  const std::string kept(59, 'x'),
      high = "registerAddress is too high: the registers of a station end at 1048575";
  const std::pair<DriverConfig, std::string> kRefusals[] = {
      {Text("", -5), "value1 is negative: -5"},
      {Text("", 0, -1), "value2 is negative: -1"},
      {Text("", 0, 0, -1), "value3 is negative: -1"},
      {Text("", 0, 0, 0, -2147483647 - 1), "value4 is negative: -2147483648"},
      {Station(-1, 0), "station is negative: -1"},
      {Station(0, -1), "registerAddress is negative: -1"},
      {Station(1, 1048575), high},
      {Station(1, 2147483647), high},
      {Text("sine, cosine"), "text1 has an unknown waveform: \"cosine\""},
      {Text("Sine"), "text1 has an unknown waveform: \"Sine\""},
      {Text("ramp,"), "text1 has an unknown waveform: \"\""},
      {Text((kept + "\u20AC and more").c_str()), "text1 has an unknown waveform: \"" + kept + "...\""}};
  const CDriverFactory& factory = *CDriverFactory::Instance();
  for (auto [config, words] : kRefusals) {
    EXPECT_EQ(Node(config, 2).fault, "Open Fatal Not named Simulator: " + words + "\n");
    config.variableCount = 2;
    EXPECT_EQ(factory.CheckConfig(factory.GetDriverIndex(9001), config).Std(), words);
  }
  EXPECT_EQ(Node(Station(23, 1048574), 2).fault, "");
}

TEST_F(Simulator, NeverShowsAHalfWrittenScanToAnotherThread) {
  constexpr UINT kMany = 20'000;  // a copy that takes long enough to be interrupted
  CDriverNode reader = Node(Station(24, 0), kMany), writer = Node(Station(24, 0), kMany, kWrite);
  const std::jthread writing([&writer](const std::stop_token& stop) {
    for (float value = 1; !stop.stop_requested(); ++value) writer.Write(CValues(kMany, value));
  });
  for (int i = 0; i < 1000; ++i) {
    const CValues values = reader.Read();
    ASSERT_EQ(values.at(0), values.back());
  }
}

TEST_F(GuideDriver, ReadsItsFileFindsItAgainAfterALossAndRefusesWhatItCannotServe) {
  const CTempDir folder;
  const CString path = folder / "numbers.txt";
  WriteBytes(path, "1.5 -2\n");
  CDriverNode node = Node(Text(path), 2), second = Node(Text(path), 2);
  EXPECT_EQ(node.Read(), (CValues{1.5f, -2}));
  WriteBytes(path, "3");
  EXPECT_EQ(node.Read(), CValues{});
  EXPECT_EQ(node.fault, "Read Error Not named " + path.Std() + ": has too few numbers.\n");
  std::filesystem::remove(path.Std());
  EXPECT_EQ(node.Read(), CValues{});
  EXPECT_EQ(node.fault, "Read Error Not named " + path.Std() + ": cannot be opened.\n");
  WriteBytes(path, "4 5 6");
  EXPECT_EQ(node.Read(), (CValues{4, 5}));

  const DriverConfig config = Text(path);
  EXPECT_EQ(Node(config, 1, kWrite).fault, "Open Fatal Not named Invalid mode.\n");
  std::vector<CDriverNode> nodes;
  while (nodes.size() < 62) nodes.push_back(Node(config, 1));
  EXPECT_EQ(nodes.back().Read(), CValues{4});
  EXPECT_EQ(Node(config, 1).fault, "Open Fatal Not named Not enough memory.\n");
  nodes.clear();
  EXPECT_EQ(Node(config, 1).fault, "");
  EXPECT_EQ(Node(Text(std::string(300, 'a').c_str()), 1).fault,
            "Open Fatal Not named Text file: text1 is not a readable file.\n");
}

}  // namespace
}  // namespace vastra
