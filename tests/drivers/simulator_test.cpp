// The simulator through the links of the engine.
#include <chrono>
#include <cmath>
#include <thread>

#include "tests/drivers/driver_node.h"
#include "tests/drivers/scripted_host.h"
#include "vastra/platform/prompt.h"

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
  EXPECT_EQ((CValues{2.5f, 1, 2.5f, 2.5f, 1}), node.Read());
  EXPECT_EQ((CValues{2.5f, 2, 2.5f, 2.5f, 2}), node.Read());
}

TEST_F(Simulator, StandsOnItsDefaultsWhenNothingIsSet) {
  for (const char* text : {"", "  "}) {
    CDriverNode sine = Node(Waves(text), 1), constant = Node(Waves("constant"), 1);
    EXPECT_EQ(CValues{1}, constant.Read());
    EXPECT_LT(sine.Read().at(0), 1.0f) << "ten seconds a period: it has hardly begun";
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
    EXPECT_EQ(phase < 0.5 ? 2.0f : -2.0f, values[2]);
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
    EXPECT_EQ(values, b.Read());
    EXPECT_NE(values, other.Read());
    EXPECT_NE(values[0], values[1]);
    EXPECT_TRUE(std::abs(values[0]) <= 3 && std::abs(values[1]) <= 3);
    sum += values[0] + values[1];
  }
  EXPECT_LT(std::abs(sum / 2000), 0.2) << "five times the deviation of the mean";
}

TEST_F(Simulator, SharesTheRegistersOfAStationAndOfNoOther) {
  CDriverNode reader = Node(Station(21, 10), 3), early = Node(Station(21, 8), 3),
              other = Node(Station(22, 10), 3);
  CDriverNode writer = Node(Station(21, 10), 3, kWrite);
  EXPECT_EQ((CValues{0, 0, 0}), reader.Read());
  EXPECT_TRUE(writer.Write({1.5f, -2, 3}));
  EXPECT_EQ((CValues{1.5f, -2, 3}), reader.Read());
  EXPECT_EQ((CValues{0, 0, 1.5f}), early.Read());
  EXPECT_EQ((CValues{0, 0, 0}), other.Read());
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
    EXPECT_EQ(CValues{1}, node.Read());
    EXPECT_TRUE(node.Write({0}));
    EXPECT_EQ(CValues{}, node.Read());
    EXPECT_EQ(CValues{3}, node.Read());
    EXPECT_EQ(CValues{4}, node.Read());
    EXPECT_FALSE(node.Write({0}));
    EXPECT_EQ(std::string("Write ") + row.fault, node.Fault());
    EXPECT_EQ(CValues{5}, node.Read());
    EXPECT_EQ(CValues{1}, untouched.Read());
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
    EXPECT_EQ(std::string("Open Fatal Not named Simulator: ") + bad.words + "\n", Node(config, 2).Fault());
  }
  const std::string kept(59, 'x');
  EXPECT_EQ("Open Fatal Not named Simulator: text1 has an unknown waveform: \"" + kept + "...\"\n",
            Node(Waves((kept + "\u20AC and more").c_str()), 1).Fault());
  EXPECT_EQ("Open Fatal Not named Invalid mode.\n", Node({}, 1, 7).Fault());
  EXPECT_EQ("", Node(Station(23, 1048574), 2).Fault());
}

TEST_F(Simulator, NeverShowsAHalfWrittenScanToAnotherThread) {
  CDriverNode reader = Node(Station(24, 0), 500), writer = Node(Station(24, 0), 500, kWrite);
  const std::jthread writing([&writer] {
    for (int i = 1; i <= 500; ++i) writer.Write(CValues(500, static_cast<float>(i)));
  });
  for (int i = 0; i < 500; ++i) {
    const CValues values = reader.Read();
    ASSERT_EQ(CValues(500, values.at(0)), values);
  }
}

class SimulatorForm : public testing::Test {
 protected:
  DriverConfig Given() const { return {1, 2, 3, 4, 5, 6, 7, 8, 9, " ramp,sine", "two", 10, 11, 12, 13, 109}; }
  std::unique_ptr<CPlcLink> NewLink() const {
    return std::unique_ptr<CPlcLink>(
        CDriverFactory::Instance()->NewDriver(CDriverFactory::Instance()->GetDriverIndex(kSimulator)));
  }
  CRecorder m_recorder;
  CScriptedHost m_host;
};

TEST_F(SimulatorForm, BeginsANewNodeWithTheDefaults) {
  const std::unique_ptr<CPlcLink> link = NewLink();
  link->SetConfig(Given());  // of another node
  EXPECT_EQ(IDOK, link->ShowConfig(1));
  EXPECT_EQ(
      "Waveforms=sine|Period (ms)=10000|Amplitude (1/1000)=1000|Seed of the noise=0|Station=0|First "
      "register=0|"
      "Each n-th call fails=0|It fails with=Unknown error|",
      m_host.shown);
  DriverConfig defaults;
  defaults.plcType = kSimulator;
  defaults.text1 = "sine";
  defaults.value1 = 10000;
  defaults.value2 = 1000;
  EXPECT_TRUE(defaults == link->GetConfig());
}

TEST_F(SimulatorForm, ChangesWhatTheUserEnteredAndNothingElse) {
  const struct {
    const char *field, *value;
    void (*changes)(DriverConfig&);
  } kCases[] = {
      {"", "", [](DriverConfig&) {}},
      {"Waveforms", "noise", [](DriverConfig& config) { config.text1 = "noise"; }},
      {"Period (ms)", "0", [](DriverConfig& config) { config.value1 = 0; }},
      {"Amplitude (1/1000)", "77", [](DriverConfig& config) { config.value2 = 77; }},
      {"Seed of the noise", "77", [](DriverConfig& config) { config.value3 = 77; }},
      {"Station", "77", [](DriverConfig& config) { config.station = 77; }},
      {"First register", "1048569", [](DriverConfig& config) { config.registerAddress = 1048569; }},
      {"Each n-th call fails", "77", [](DriverConfig& config) { config.value4 = 77; }},
      {"It fails with", "Reply error", [](DriverConfig& config) { config.value5 = statusReplyError; }},
  };
  for (const auto& c : kCases) {
    DriverConfig wanted = Given();
    wanted.plcType = kSimulator;
    c.changes(wanted);
    m_host.enters = {{c.field, c.value}};
    const std::unique_ptr<CPlcLink> link = NewLink();
    link->SetConfig(Given());
    EXPECT_EQ(IDOK, link->ShowConfig(0));
    EXPECT_TRUE(wanted == link->GetConfig()) << c.field;
  }
  EXPECT_EQ(
      "Waveforms= ramp,sine|Period (ms)=10|Amplitude (1/1000)=11|Seed of the noise=12|Station=3|First "
      "register=4|"
      "Each n-th call fails=13|It fails with=Time-out|",
      m_host.shown);
}

TEST_F(SimulatorForm, KeepsASettingThatItsFieldsWouldNotGive) {
  DriverConfig config = Given();
  config.plcType = kSimulator;
  config.text1 = std::string(3000, ' ').c_str();
  config.value5 = -60;
  const std::unique_ptr<CPlcLink> link = NewLink();
  link->SetConfig(config);
  EXPECT_EQ(IDOK, link->ShowConfig(0));
  EXPECT_TRUE(config == link->GetConfig());
  EXPECT_NE(std::string::npos, m_host.shown.find("It fails with=Status -60|")) << m_host.shown;
}

TEST_F(SimulatorForm, LeavesTheSettingsWhenItIsCancelledRefusedOrNotShown) {
  const struct {
    const char *field, *value, *refusal;
    bool accepts;
  } kCases[] = {
      {"Period (ms)", "77", "", false},
      {"Waveforms", "sine, cosine", "text1 has an unknown waveform: \"cosine\"", true},
      {"Waveforms", "ramp,", "text1 has an unknown waveform: \"\"", true},
      {"First register", "1048570", "registerAddress is too high: the registers of a station end at 1048575",
       true},
  };
  DriverConfig wanted = Given();
  wanted.plcType = kSimulator;
  const std::unique_ptr<CPlcLink> link = NewLink();
  link->SetConfig(Given());
  for (const auto& c : kCases) {
    m_host.enters = {{c.field, c.value}};
    m_host.accepts = c.accepts;
    EXPECT_EQ(IDCANCEL, link->ShowConfig(0)) << c.value;
    EXPECT_EQ(c.refusal, m_host.refusal);
    EXPECT_TRUE(wanted == link->GetConfig()) << c.value;
  }
  m_host.accepts = false;
  EXPECT_EQ(IDCANCEL, link->ShowConfig(1));
  EXPECT_TRUE(wanted == link->GetConfig());
  m_host.accepts = true;
  const DriverHost* former = InstallDriverHost(nullptr);
  const std::unique_ptr<CPlcLink> headless = NewLink();
  InstallDriverHost(former);
  m_host.shown = "";
  EXPECT_EQ(IDCANCEL, headless->ShowConfig(0));
  EXPECT_EQ("", m_host.shown);
  EXPECT_TRUE(wanted == headless->GetConfig());
}

TEST(SimulatorTable, KnowsNoHandleThatIsNotOpen) {
  CRecorder recorder;
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const int index = factory.GetDriverIndex(kSimulator);
  const HMODULE module = LoadModule(factory.GetPath() + "/" + factory.GetDrivers()[index].m_fileName);
  const auto header = reinterpret_cast<decltype(&GetDriverHeader)>(FindExport(module, "GetDriverHeader"))();
  int handle = -1;
  float value = 0;
  EXPECT_EQ(statusOk, header.functions->Open({}, driverModeRead, &handle));
  EXPECT_EQ(statusOk, header.functions->Read(&value, 1, handle));
  header.functions->Close(handle);
  header.functions->Close(handle);
  for (const int closed : {handle, -1, 0, 2147483647}) {
    EXPECT_EQ(statusNotOpened, header.functions->Read(&value, 1, closed));
    EXPECT_EQ(statusNotOpened, header.functions->Write(&value, 1, closed));
    EXPECT_STRNE(nullptr, header.functions->GetExtendedError(closed));
  }
  FreeModule(module);
}

}  // namespace
}  // namespace vastra
