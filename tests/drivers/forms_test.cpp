// The forms of the driver modules, filled in through the links of the engine.
#include <gtest/gtest.h>

#include <memory>

#include "tests/drivers/scripted_host.h"
#include "tests/support/recorder.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {
namespace {

using CChange = void (*)(DriverConfig&);

// A value entered in a field, and what it changes in the settings.
struct CEntry {
  const char *field, *value;
  CChange change;
};

struct CFormCase {
  const char* driver;
  DriverConfig given;
  const char* newNode;  // the form of a new node
  std::map<std::string, std::string> newEnters;
  DriverConfig newSettings;
  const char* shown;  // a part of the form of given
  std::vector<CEntry> entries;
  std::vector<std::pair<std::map<std::string, std::string>, const char*>>
      refused;  // with the begin of the words
};

DriverConfig Settings(int id, CChange change) {
  DriverConfig config;
  config.plcType = id;
  change(config);
  return config;
}

const CFormCase kForms[] = {
    {"Simulator",
     {1, 2, 3, 4, 5, 6, 7, 9001, 9, " ramp,sine", "two", 10, 11, 12, 13, 109},
     "Waveforms=sine|Period (ms)=10000|Amplitude (1/1000)=1000|Seed of the noise=0|Station=0|First "
     "register=0|"
     "Each n-th call fails=0|It fails with=Unknown error|",
     {},
     Settings(9001, [](DriverConfig& c) { c.text1 = "sine", c.value1 = 10000, c.value2 = 1000; }),
     "Waveforms= ramp,sine|Period (ms)=10|Amplitude (1/1000)=11|Seed of the noise=12|Station=3|"
     "First register=4|Each n-th call fails=13|It fails with=Time-out|",
     {{"Waveforms", "noise", [](DriverConfig& c) { c.text1 = "noise"; }},
      {"Period (ms)", "0", [](DriverConfig& c) { c.value1 = 0; }},
      {"Amplitude (1/1000)", "77", [](DriverConfig& c) { c.value2 = 77; }},
      {"Seed of the noise", "77", [](DriverConfig& c) { c.value3 = 77; }},
      {"Station", "77", [](DriverConfig& c) { c.station = 77; }},
      {"First register", "1048569", [](DriverConfig& c) { c.registerAddress = 1048569; }},
      {"Each n-th call fails", "77", [](DriverConfig& c) { c.value4 = 77; }},
      {"It fails with", "Reply error", [](DriverConfig& c) { c.value5 = statusReplyError; }}},
     {{{{"Waveforms", "sine, cosine"}}, "text1 has an unknown waveform: \"cosine\""},
      {{{"First register", "1048570"}}, "registerAddress is too high"}}},
    {"Modbus",
     {1, 2, 3, -4, 5, 6, 7, 9002, 9, "plc:1502", "h4 x 2: f32", 10, 11, 12, 3, 13},
     "Device=|Unit=1|Time-out (ms)=1000|Values=|Added to each address=0|Pause between requests (ms)=0|"
     "Pause after connecting (ms)=0|Most registers in a request=0|Workarounds=None|",
     {{"Device", "plc"}, {"Values", "c0"}},
     Settings(9002,
              [](DriverConfig& c) { c.text1 = "plc", c.text2 = "c0", c.station = 1, c.timeOut = 1000; }),
     "|Workarounds=Both|",
     {{"Device", "plc", [](DriverConfig& c) { c.text1 = "plc"; }},
      {"Values", "c7", [](DriverConfig& c) { c.text2 = "c7"; }},
      {"Unit", "77", [](DriverConfig& c) { c.station = 77; }},
      {"Time-out (ms)", "77", [](DriverConfig& c) { c.timeOut = 77; }},
      {"Added to each address", "-3", [](DriverConfig& c) { c.registerAddress = -3; }},
      {"Pause between requests (ms)", "77", [](DriverConfig& c) { c.value1 = 77; }},
      {"Pause after connecting (ms)", "77", [](DriverConfig& c) { c.value2 = 77; }},
      {"Most registers in a request", "77", [](DriverConfig& c) { c.value3 = 77; }},
      {"Workarounds", "None", [](DriverConfig& c) { c.value4 = 0; }},
      {"Workarounds", "One request for each value", [](DriverConfig& c) { c.value4 = 1; }},
      {"Workarounds", "Connection closed after each scan", [](DriverConfig& c) { c.value4 = 2; }}},
     {{{{"Values", "h4, x1"}}, "text2: entry 2, "}, {{{"Most registers in a request", "1"}}, "value3: "}}},
    {"Text file's dialog",
     {1, 2, 3, 4, 5, 6, 7, 9900, 9, "/old", "", 10, 11, 12, 13, 14},
     "Path=|",
     {{"Path", "/new"}},
     Settings(9900, [](DriverConfig& c) { c.text1 = "/new"; }),
     "Path=/old|",
     {{"Path", "/new", [](DriverConfig& c) { c.text1 = "/new"; }}},
     {{{{"Path", "new"}}, "Path: it has to begin with a slash."}}},
};

class FormValues : public testing::Test {
 protected:
  static std::unique_ptr<CPlcLink> NewLink(const char* driver, const DriverConfig& config) {
    const CDriverFactory& factory = *CDriverFactory::Instance();
    int index = 0;
    while (factory.GetDriverName(index) != driver) ++index;
    std::unique_ptr<CPlcLink> link(factory.NewDriver(index));
    link->SetConfig(config);
    return link;
  }

  CRecorder m_recorder;
  CScriptedHost m_host;
};

class Forms : public FormValues, public testing::WithParamInterface<CFormCase> {
 protected:
  static std::unique_ptr<CPlcLink> NewGiven() { return NewLink(GetParam().driver, GetParam().given); }
};

TEST_P(Forms, BeginANewNodeWithTheDefaults) {
  const std::unique_ptr<CPlcLink> link = NewGiven();  // which has the settings of another node
  m_host.enters = GetParam().newEnters;
  EXPECT_EQ(link->ShowConfig(1), IDOK) << m_host.refusal;
  EXPECT_EQ(m_host.shown, GetParam().newNode);
  EXPECT_TRUE(link->GetConfig() == GetParam().newSettings);
}

TEST_P(Forms, ChangeWhatTheUserEnteredAndNothingElse) {
  for (const CEntry& entry : GetParam().entries) {
    DriverConfig wanted = GetParam().given;
    entry.change(wanted);
    m_host.enters = {{entry.field, entry.value}};
    const std::unique_ptr<CPlcLink> link = NewGiven();
    EXPECT_EQ(link->ShowConfig(0), IDOK) << entry.field << m_host.refusal;
    EXPECT_TRUE(link->GetConfig() == wanted) << entry.field << entry.value;
    EXPECT_NE(m_host.shown.find(GetParam().shown), std::string::npos) << m_host.shown;
  }
}

TEST_P(Forms, ChangeNothingWhenTheyAreRefusedCancelledOrNotShown) {
  const std::unique_ptr<CPlcLink> link = NewGiven();
  const auto isUnchanged = [&] { return link->GetConfig() == GetParam().given; };
  for (const auto& [enters, words] : GetParam().refused) {
    m_host.enters = enters;
    EXPECT_EQ(link->ShowConfig(0), IDCANCEL) << words;
    EXPECT_TRUE(m_host.refusal.starts_with(words)) << m_host.refusal;
    EXPECT_TRUE(isUnchanged()) << words;
  }
  const CEntry& entry = GetParam().entries.front();
  m_host.enters = {{entry.field, entry.value}};
  m_host.accepts = false;
  for (const int isNew : {0, 1}) EXPECT_EQ(link->ShowConfig(isNew), IDCANCEL);
  EXPECT_TRUE(isUnchanged());
  const DriverHost* former = InstallDriverHost(nullptr);
  const std::unique_ptr<CPlcLink> headless = NewGiven();
  InstallDriverHost(former);
  m_host.shown = "";
  EXPECT_EQ(headless->ShowConfig(0), IDCANCEL);
  EXPECT_EQ(m_host.shown, "");
}

INSTANTIATE_TEST_SUITE_P(Each, Forms, testing::ValuesIn(kForms),
                         [](const auto& form) { return std::string(form.param.driver).substr(0, 4); });

// A field keeps a value that it cannot offer, and has room for a text as long as a list may be.
TEST_F(FormValues, AreKeptThoughAFieldDoesNotOfferThem) {
  DriverConfig config = kForms[0].given;
  config.text1 = std::string(17000, ' ').c_str();
  config.value5 = -60;
  std::unique_ptr<CPlcLink> link = NewLink("Simulator", config);
  EXPECT_EQ(link->ShowConfig(0), IDOK);
  EXPECT_TRUE(link->GetConfig() == config);
  EXPECT_NE(m_host.shown.find("It fails with=Status -60|"), std::string::npos) << m_host.shown;

  config = kForms[1].given;
  config.value4 = 7;
  link = NewLink("Modbus", config);
  EXPECT_EQ(link->ShowConfig(0), IDCANCEL);
  EXPECT_EQ(m_host.refusal.find("value4: "), 0u) << m_host.refusal;
  const std::string longList = std::string(15998, ' ') + "h4";
  m_host.enters = {{"Workarounds", "Both"}, {"Values", longList}};
  config.value4 = 3;
  config.text2 = longList.c_str();
  EXPECT_EQ(link->ShowConfig(0), IDOK);
  EXPECT_TRUE(link->GetConfig() == config);
}

}  // namespace
}  // namespace vastra
