// The form of the Modbus driver, filled in through the links of the engine.
#include <gtest/gtest.h>

#include <memory>

#include "tests/drivers/scripted_host.h"
#include "tests/support/recorder.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {
namespace {

constexpr int kModbus = 9002;

class ModbusForm : public testing::Test {
 protected:
  // The list is shorter than the variables: they may be chosen later.
  static DriverConfig Given() {
    return {1, 2, 3, -4, 5, 6, 7, kModbus, 9, "plc:1502", "h4 x 2: f32", 10, 11, 12, 3, 13};
  }
  std::unique_ptr<CPlcLink> NewLink(const DriverConfig& config = Given()) const {
    std::unique_ptr<CPlcLink> link(
        CDriverFactory::Instance()->NewDriver(CDriverFactory::Instance()->GetDriverIndex(kModbus)));
    link->SetConfig(config);
    return link;
  }
  CRecorder m_recorder;
  CScriptedHost m_host;
};

TEST_F(ModbusForm, AsksForEachSettingOfANewNodeFromTheDefaults) {
  m_host.enters = {{"Device", "plc"}, {"Values", "c0"}};
  const std::unique_ptr<CPlcLink> link = NewLink();
  EXPECT_EQ(IDOK, link->ShowConfig(1));
  EXPECT_EQ(
      "Device=|Unit=1|Time-out (ms)=1000|Values=|Added to each address=0|Pause between requests (ms)=0|"
      "Pause after connecting (ms)=0|Most registers in a request=0|Workarounds=None|",
      m_host.shown);
  DriverConfig wanted;
  wanted.plcType = kModbus;
  wanted.text1 = "plc";
  wanted.text2 = "c0";
  wanted.station = 1;
  wanted.timeOut = 1000;
  EXPECT_TRUE(wanted == link->GetConfig());
}

TEST_F(ModbusForm, StoresEachFieldInItsSettingAndLeavesTheOthers) {
  const std::string longList = std::string(15998, ' ') + "h4";
  const struct {
    const char *field, *value;
    void (*changes)(DriverConfig&, const char* value);
  } kCases[] = {
      {"", "", [](DriverConfig&, const char*) {}},
      {"Device", "[::1]", [](DriverConfig& config, const char* value) { config.text1 = value; }},
      {"Unit", "77", [](DriverConfig& config, const char*) { config.station = 77; }},
      {"Time-out (ms)", "77", [](DriverConfig& config, const char*) { config.timeOut = 77; }},
      {"Values", longList.c_str(), [](DriverConfig& config, const char* value) { config.text2 = value; }},
      {"Added to each address", "-3", [](DriverConfig& config, const char*) { config.registerAddress = -3; }},
      {"Pause between requests (ms)", "77", [](DriverConfig& config, const char*) { config.value1 = 77; }},
      {"Pause after connecting (ms)", "77", [](DriverConfig& config, const char*) { config.value2 = 77; }},
      {"Most registers in a request", "77", [](DriverConfig& config, const char*) { config.value3 = 77; }},
      {"Workarounds", "None", [](DriverConfig& config, const char*) { config.value4 = 0; }},
      {"Workarounds", "One request for each value",
       [](DriverConfig& config, const char*) { config.value4 = 1; }},
      {"Workarounds", "Connection closed after each scan",
       [](DriverConfig& config, const char*) { config.value4 = 2; }},
  };
  for (const auto& row : kCases) {
    DriverConfig wanted = Given();
    row.changes(wanted, row.value);
    m_host.enters = {{row.field, row.value}};
    const std::unique_ptr<CPlcLink> link = NewLink();
    EXPECT_EQ(IDOK, link->ShowConfig(0)) << row.field << m_host.refusal;
    EXPECT_TRUE(wanted == link->GetConfig()) << row.field;
  }
  EXPECT_NE(std::string::npos, m_host.shown.find("|Workarounds=Both|")) << m_host.shown;
}

TEST_F(ModbusForm, RefusesWhatNoNodeCouldOpenWithAndSaysWhich) {
  const struct {
    const char *field, *value, *setting;
  } kCases[] = {
      {"Values", "h4, x1", "text2: entry 2, "},
      {"Most registers in a request", "1", "value3: "},
  };
  for (const auto& row : kCases) {
    m_host.enters = {{row.field, row.value}};
    const std::unique_ptr<CPlcLink> link = NewLink();
    EXPECT_EQ(IDCANCEL, link->ShowConfig(0)) << row.field;
    EXPECT_EQ(0u, m_host.refusal.find(row.setting)) << m_host.refusal;
    EXPECT_TRUE(Given() == link->GetConfig()) << row.field;
  }
}

TEST_F(ModbusForm, ShowsAWorkaroundThatThereIsNotUntilTheUserChoosesAnother) {
  DriverConfig config = Given();
  config.value4 = 7;
  const std::unique_ptr<CPlcLink> link = NewLink(config);
  EXPECT_EQ(IDCANCEL, link->ShowConfig(0));
  EXPECT_NE(std::string::npos, m_host.shown.find("|Workarounds=Value 7|")) << m_host.shown;
  EXPECT_EQ(0u, m_host.refusal.find("value4: ")) << m_host.refusal;
  m_host.enters = {{"Workarounds", "Both"}};
  EXPECT_EQ(IDOK, link->ShowConfig(0));
  EXPECT_TRUE(Given() == link->GetConfig());
}

}  // namespace
}  // namespace vastra
