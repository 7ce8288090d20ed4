#include "vastra/plc/plc_link.h"

#include <gtest/gtest.h>

#include "tests/plc/scripted_driver.h"
#include "tests/support/recorder.h"
#include "vastra/core/name_config.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

constexpr UINT kRead = CLink::modeRead, kWrite = CLink::modeWrite;

class PlcLink : public testing::Test {
 protected:
  PlcLink() { NewLink(); }
  void NewLink() {
    m_link.reset(m_factory.NewDriver(m_factory.GetDriverIndex(SCRIPTED_ID)));
    m_link->m_name = "P";
  }
  static CPlcLinkConfig* Config(UINT count, int useDriver = 1) {
    auto* config = new CPlcLinkConfig;
    config->m_config = {.variableCount = count, .openState = 3, .text1 = "one", .text2 = "two"};
    config->m_useDriver = useDriver;
    return config;
  }
  int Open(CLinkConfig* config = Config(3), UINT mode = kRead) {
    CLinkConfigList configs;
    configs.AddTail(config);
    return m_link->Open(configs, mode);
  }
  int Read() { return m_link->Read(m_sample); }
  int Write() { return m_link->Write(m_sample); }
  std::string Calls() { return std::exchange(m_script->calls, {}); }

  const CDriverFactory& m_factory = *CDriverFactory::Instance();
  const HMODULE m_module = LoadModule(m_factory.GetPath() + "/scripted_driver.so");  // stays loaded
  Script* const m_script = reinterpret_cast<Script* (*)()>(FindExport(m_module, "FreshScript"))();
  CRecorder m_recorder;
  std::unique_ptr<CPlcLink> m_link;
  CLogSample m_sample;
};

const std::string kOpen = "Open 0 3 0 one two, ";

TEST_F(PlcLink, ReportsEachStatusAsItsOperationDoes) {
  const struct {
    int status;
    std::string open, transfer, asked = "";  // the driver's function for the text
  } kCases[] = {
      {58, "Fatal P Not enough memory.", "Fatal P No memory."},
      {59, "Fatal P driver's words", "Error P driver's words", "GetExtendedError 5, "},
      {77, "Fatal P Unknown error.", "Fatal P Driver is not opened."},
      {93, "Fatal P Unknown error.", "Error P Invalid frame."},
      {109, "Fatal P Unknown error.", "Error P Timeout error."},
      {125, "Fatal P Invalid mode.", "Error P Unknown error."},
      {157, "Fatal P driver's words", "Error P driver's words", "GetReplyError 5, "},
      {0, "Fatal P Unknown error.", "Error P Unknown error."},
  };
  m_sample.m_values.SetSize(3);
  for (const auto& row : kCases) {
    m_script->openStatus = m_script->readStatus = m_script->writeStatus = row.status;
    EXPECT_EQ(Open(), 0);
    m_script->openStatus = statusOk;
    EXPECT_EQ(Open(), 1);
    EXPECT_EQ(Read() + Write(), 0);
    EXPECT_EQ(m_recorder.TakeFaults(),
              "Open " + row.open + "\nRead " + row.transfer + "\nWrite " + row.transfer + "\n");
    EXPECT_EQ(Calls(), kOpen + row.asked + kOpen + "Read 3 5, " + row.asked + "Write 3 5, " + row.asked);
    m_link->Close();
    Calls();
  }
}

TEST_F(PlcLink, AsksForTheTextOfAFailureAndReplacesAMissingOne) {
  m_script->openStatus = statusExtendedError;
  for (const int handle : {5, SCRIPTED_NO_HANDLE}) m_script->handle = handle, Open();
  EXPECT_EQ(Calls(), kOpen + "GetExtendedError 5, " + kOpen + "GetExtendedError -1, ");
  m_script->openStatus = statusOk;
  m_script->functions.GetReplyError = nullptr;
  m_script->text = nullptr;
  Open();
  m_recorder.Take();
  for (const int status : {statusReplyError, statusExtendedError}) m_script->readStatus = status, Read();
  EXPECT_EQ(m_recorder.TakeFaults(), "Read Error P Reply error.\nRead Error P Extended error.\n");
}

TEST_F(PlcLink, RefusesWhatItCannotOpenAndStaysClosed) {
  EXPECT_FALSE(Open(nullptr) || Open(new CNameConfig) || Open(Config(0, 0)) || Open(Config(0)));
  EXPECT_EQ(Open(Config(3, 0)), 1);  // without the driver, for the names only
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(Open(Config((1u << 24) + 1)), 0);  // too many values for the memory
  EXPECT_EQ(Calls(), "Open 0 16777217 0 one two, Close 5, ");
  m_script->functions.Open = nullptr;
  EXPECT_EQ(Open() + Read() + Write(), 0);
  EXPECT_EQ(m_recorder.TakeFaults(),
            "Open Fatal P No configuration given.\nOpen Fatal P Invalid configuration.\n"
            "Open Fatal P Plc has no variables.\nOpen Fatal P Plc has no variables.\n"
            "Open Fatal P Couldn't allocate memory.\nOpen Fatal P Couldn't open driver.\n"
            "Read Fatal P Linker is not opened.\nWrite Fatal P Linker is not opened.\n");
}

TEST_F(PlcLink, PassesTheModeOnAndClosesEachConnectionOnce) {
  for (const UINT mode : {kRead, kWrite, 7u, CLink::modeNotOpened}) EXPECT_EQ(Open(Config(3), mode), 1);
  for (int time = 0; time < 2; ++time) m_link->Close();
  EXPECT_EQ(Calls(),
            "Open 0 3 0 one two, Close 5, Open 1 3 0 one two, Close 5, "
            "Open 100 3 0 one two, Close 5, Open 100 3 0 one two, Close 5, ");
  for (const int version : {2, 1}) {  // a driver of version 1 is not closed
    m_script->version = version;
    NewLink();
    Open();
    m_link.reset();
    EXPECT_EQ(Calls(), kOpen + (version == 2 ? "Close 5, " : ""));
  }
}

TEST_F(PlcLink, StampsASampleAfterTheDriversAnswerAndDoesNotChangeItOnAFailure) {
  static constexpr _timeb kNow = {1000000000, 250, -60, 1, 0};
  struct CWatchingClock : CClock {
    explicit CWatchingClock(const Script& script) : m_script(script) {}
    _timeb Now() override { return m_seen = m_script.calls, kNow; }
    const Script& m_script;
    std::string m_seen;
  } clock(*m_script);
  SetClock(&clock);
  Open();
  Calls();
  m_sample.m_values.Add(7);
  m_script->readStatus = statusTimeout;
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(m_sample.m_values.GetSize(), 1);
  EXPECT_EQ(m_sample.m_time, _timeb());
  m_script->readStatus = statusOk;
  EXPECT_EQ(Read(), 1);
  SetClock(nullptr);
  EXPECT_EQ(clock.m_seen, "Read 3 5, Read 3 5, ");
  EXPECT_EQ(m_sample.m_time, kNow);
  EXPECT_EQ(std::vector(m_sample.m_values.begin(), m_sample.m_values.end()), (std::vector{1.0f, 2.0f, 3.0f}));
}

TEST_F(PlcLink, SendsTheFirstValuesOfASampleAndRefusesAShortOne) {
  Open(Config(3), kWrite);
  for (const float value : {10.0f, 20.0f, 30.0f, 40.0f}) m_sample.m_values.Add(value);
  EXPECT_EQ(Write(), 1);
  EXPECT_EQ(std::vector(m_script->values, m_script->values + 4), (std::vector{10.0f, 20.0f, 30.0f, 4.0f}));
  m_sample.m_values.SetSize(2);
  Calls();
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(Calls(), "");
  EXPECT_EQ(m_recorder.TakeFaults(), "Write Error P Sample is not valid.\n");
}

TEST_F(PlcLink, PassesAllSettingsToTheDriversDialogAndBack) {
  const DriverConfig given = {1, 2, 3, 4, 5, 6, 7, 8, 9, "a", "b", 10, 11, 12, 13, 14};
  EXPECT_EQ(m_link->SetConfig(given), 0);
  EXPECT_EQ(m_link->ShowConfig(0), IDOK);
  EXPECT_EQ(m_link->GetConfig(), given);
  EXPECT_EQ(Calls(), "SetConfig, ShowConfig 0, GetConfig, ");
  EXPECT_EQ(m_script->record.value3 * 100 + m_script->record.value4, 1213);
  m_script->record.text1 = m_script->record.text2 = nullptr;
  EXPECT_EQ(m_link->GetConfig().text1.Std() + m_link->GetConfig().text2.Std(), "");
  m_script->showResult = 2;
  EXPECT_EQ(m_link->ShowConfig(1), IDCANCEL);
  m_script->functions = {};
  EXPECT_EQ(m_link->ShowConfig(1), IDCANCEL);
  EXPECT_EQ(m_link->SetConfig({}), -1);
  EXPECT_EQ(m_link->GetConfig().openState, 100);
}

}  // namespace
}  // namespace vastra
