// CPlcLink on a real driver module that does what the test says.
#include "vastra/plc/plc_link.h"

#include <gtest/gtest.h>

#include "tests/plc/scripted_driver.h"
#include "tests/support/recorder.h"
#include "vastra/core/name_config.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/driver_host.h"

namespace vastra {
namespace {

constexpr UINT kRead = CLink::modeRead, kWrite = CLink::modeWrite;

class PlcLink : public testing::Test {
 protected:
  PlcLink() {
    const CDriverFactory& factory = *CDriverFactory::Instance();
    const int index = factory.GetDriverIndex(SCRIPTED_ID);
    m_module = LoadModule(factory.GetPath() + "/" + factory.GetDrivers()[index].m_fileName);
    m_script = reinterpret_cast<Script* (*)()>(FindExport(m_module, "FreshScript"))();
    m_link.reset(factory.NewDriver(index));
  }
  ~PlcLink() override {
    m_link.reset();
    FreeModule(m_module);
  }

  static CPlcLinkConfig* Config(UINT count) {
    auto* config = new CPlcLinkConfig;
    config->m_config.variableCount = count;
    config->m_config.openState = 3;
    config->m_config.text1 = "one";
    config->m_config.text2 = "two";
    return config;
  }
  int OpenWith(CLinkConfig* config, UINT mode = kRead) {
    CLinkConfigList configs;
    configs.AddTail(config);
    return m_link->Open(configs, mode);
  }
  // Opens with three values and forgets the lines and calls of it.
  void OpenQuietly(UINT mode = kRead) {
    EXPECT_EQ(1, OpenWith(Config(3), mode));
    m_recorder.Take();
    m_script->calls[0] = 0;
  }

  CRecorder m_recorder;
  HMODULE m_module;
  Script* m_script;
  std::unique_ptr<CPlcLink> m_link;
  CLogSample m_sample;
};

struct CStatusCase {
  int status;
  const char* open;      // severity and words in Open
  const char* transfer;  // and in Read and Write
  const char* asked;     // which text function
};
constexpr CStatusCase kStatusCases[] = {
    {58, "Fatal Not named Not enough memory.", "Fatal Not named No memory.", nullptr},
    {59, "Fatal Not named driver's words", "Error Not named driver's words", "GetExtendedError 5, "},
    {77, "Fatal Not named Unknown error.", "Fatal Not named Driver is not opened.", nullptr},
    {93, "Fatal Not named Unknown error.", "Error Not named Invalid frame.", nullptr},
    {109, "Fatal Not named Unknown error.", "Error Not named Timeout error.", nullptr},
    {125, "Fatal Not named Invalid mode.", "Error Not named Unknown error.", nullptr},
    {157, "Fatal Not named driver's words", "Error Not named driver's words", "GetReplyError 5, "},
    {0, "Fatal Not named Unknown error.", "Error Not named Unknown error.", nullptr},
    {1, "Fatal Not named Unknown error.", "Error Not named Unknown error.", nullptr},
    {-60, "Fatal Not named Unknown error.", "Error Not named Unknown error.", nullptr},
};

TEST_F(PlcLink, ReportsEachStatusInTheWordsOfTheOperation) {
  m_sample.m_values.SetSize(3);
  for (const CStatusCase& row : kStatusCases) {
    SCOPED_TRACE(row.status);
    const std::string asked = row.asked ? row.asked : "";
    m_link->Close();
    m_recorder.Take();
    m_script->openStatus = row.status;
    m_script->calls[0] = 0;
    EXPECT_EQ(0, OpenWith(Config(3)));
    EXPECT_EQ("Open Begin Not named\nOpen " + std::string(row.open) + "\n", m_recorder.Take());
    EXPECT_EQ("Open 0 3 0 one two, " + asked, m_script->calls);
    m_script->openStatus = statusOk;
    m_script->readStatus = m_script->writeStatus = row.status;
    OpenQuietly();
    EXPECT_EQ(0, m_link->Read(m_sample));
    EXPECT_EQ(0, m_link->Write(m_sample));
    EXPECT_EQ("Read Begin Not named\nRead " + std::string(row.transfer) + "\nWrite Begin Not named\nWrite " +
                  row.transfer + "\n",
              m_recorder.Take());
    EXPECT_EQ("Read 3 5, " + asked + "Write 3 5, " + asked, m_script->calls);
  }
}

TEST_F(PlcLink, UsesItsOwnWordsForADriverThatHasNone) {
  OpenQuietly();
  m_script->functions.GetReplyError = nullptr;
  m_script->text = nullptr;
  for (const int status : {statusReplyError, statusExtendedError}) {
    m_script->readStatus = status;
    m_link->Read(m_sample);
  }
  EXPECT_EQ("Read Error Not named Reply error.\nRead Error Not named Extended error.\n",
            m_recorder.TakeFaults());
}

class CProbe : public CNameConfig {
 public:
  explicit CProbe(int& deleted) : m_deleted(deleted) {}
  ~CProbe() override { ++m_deleted; }
  int& m_deleted;
};

TEST_F(PlcLink, RefusesWhatItCannotOpenAndStaysClosed) {
  int deleted = 0;
  CPlcLinkConfig* withoutDriver = Config(0);
  withoutDriver->m_useDriver = 0;
  CLinkConfigList none;
  EXPECT_EQ(0, m_link->Open(none, kRead));
  EXPECT_EQ(0, OpenWith(nullptr));
  EXPECT_EQ(0, OpenWith(new CProbe(deleted)));
  EXPECT_EQ(1, deleted);
  EXPECT_EQ(0, OpenWith(withoutDriver));
  EXPECT_EQ(0, OpenWith(Config(0)));
  EXPECT_STREQ("", m_script->calls);
  m_script->functions.Open = nullptr;
  EXPECT_EQ(0, OpenWith(Config(3)));
  EXPECT_EQ(0, m_link->Read(m_sample));
  EXPECT_EQ(0, m_link->Write(m_sample));
  EXPECT_EQ(
      "Open Fatal Not named Invalid configuration list.\n"
      "Open Fatal Not named No configuration given.\n"
      "Open Fatal Not named Invalid configuration.\n"
      "Open Fatal Not named Plc has no variables.\n"
      "Open Fatal Not named Plc has no variables.\n"
      "Open Fatal Not named Couldn't open driver.\n"
      "Read Fatal Not named Linker is not opened.\n"
      "Write Fatal Not named Linker is not opened.\n",
      m_recorder.TakeFaults());
}

TEST_F(PlcLink, GivesTheConnectionBackWhenTheValuesDoNotFitInMemory) {
  for (const UINT count : {0xFFFFFFFFu, 0x7FFFFFFFu, (1u << 24) + 1}) {
    EXPECT_EQ(0, OpenWith(Config(count)));
    EXPECT_EQ("Open Fatal Not named Couldn't allocate memory.\n", m_recorder.TakeFaults());
    EXPECT_EQ("Open 0 " + std::to_string(count) + " 0 one two, Close 5, ", std::string(m_script->calls));
    m_script->calls[0] = 0;
  }
}

TEST_F(PlcLink, TellsTheDriverWhatItIsOpenedForAndLosesNoConnection) {
  for (const UINT mode : {kRead, kWrite, 7u, CLink::modeNotOpened, kRead})
    EXPECT_EQ(1, OpenWith(Config(3), mode));
  EXPECT_STREQ(
      "Open 0 3 0 one two, Close 5, Open 1 3 0 one two, Close 5, Open 100 3 0 one two, Close 5, "
      "Open 100 3 0 one two, Close 5, Open 0 3 0 one two, ",
      m_script->calls);
}

TEST_F(PlcLink, AsksForWordsUnderNoHandleOfAnotherOpen) {
  m_script->openStatus = statusExtendedError;
  OpenWith(Config(3));
  m_script->handle = SCRIPTED_NO_HANDLE;
  OpenWith(Config(3));
  EXPECT_STREQ("Open 0 3 0 one two, GetExtendedError 5, Open 0 3 0 one two, GetExtendedError -1, ",
               m_script->calls);
}

TEST_F(PlcLink, ReopensAndClosesTheConnectionOnceEach) {
  OpenQuietly();
  OpenWith(Config(2), kWrite);
  m_link->Close();
  m_link->Close();
  EXPECT_STREQ("Close 5, Open 1 2 0 one two, Close 5, ", m_script->calls);
  EXPECT_EQ(
      "Open Begin Not named\nClose Begin Not named\nClose End Not named\nOpen End Not named\n"
      "Close Begin Not named\nClose End Not named\nClose Begin Not named\nClose End Not named\n",
      m_recorder.Take());
  OpenQuietly();
  m_link.reset();
  EXPECT_STREQ("Close 5, ", m_script->calls);
  EXPECT_EQ("Close Begin Not named\nClose End Not named\n", m_recorder.Take());
}

// A clock that shows what the driver had been asked when the time was taken.
class CWatchingClock : public CClock {
 public:
  explicit CWatchingClock(const Script& script) : m_script(script) { SetClock(this); }
  ~CWatchingClock() override { SetClock(nullptr); }
  _timeb Now() override {
    m_seen = m_script.calls;
    return {1000000000, 250, -60, 1, 0};
  }
  const Script& m_script;
  std::string m_seen;
};

TEST_F(PlcLink, StampsASampleBehindTheDriversAnswer) {
  CWatchingClock clock(*m_script);
  OpenQuietly();
  m_sample.m_values.SetSize(9);
  EXPECT_EQ(1, m_link->Read(m_sample));
  EXPECT_EQ("Read 3 5, ", clock.m_seen);
  EXPECT_EQ((_timeb{1000000000, 250, -60, 1, 0}), m_sample.m_time);
  ASSERT_EQ(3, m_sample.m_values.GetSize());
  EXPECT_EQ(3.0f, m_sample.m_values[2]);
  EXPECT_EQ("Read Begin Not named\nRead End Not named\n", m_recorder.Take());
}

TEST_F(PlcLink, LeavesTheSampleAsItWasAfterAFailedReadAndGoesOn) {
  OpenQuietly();
  m_script->readStatus = statusTimeout;
  m_sample.m_values.Add(7);
  m_sample.m_time.time = 42;
  EXPECT_EQ(0, m_link->Read(m_sample));
  EXPECT_EQ(1, m_sample.m_values.GetSize());
  EXPECT_EQ(7.0f, m_sample.m_values[0]);
  EXPECT_EQ(42, m_sample.m_time.time);
  m_script->readStatus = statusOk;
  EXPECT_EQ(1, m_link->Read(m_sample));
  EXPECT_EQ(3, m_sample.m_values.GetSize());
}

TEST_F(PlcLink, SendsTheFirstValuesOfASampleAndNoneOfAShortOne) {
  OpenQuietly(kWrite);
  for (const float value : {10.0f, 20.0f, 30.0f, 40.0f}) m_sample.m_values.Add(value);
  m_sample.m_time.time = 42;
  EXPECT_EQ(1, m_link->Write(m_sample));
  EXPECT_EQ(30.0f, m_script->values[2]);
  EXPECT_EQ(4.0f, m_script->values[3]);
  EXPECT_EQ(42, m_sample.m_time.time);
  m_sample.m_values.SetSize(2);
  EXPECT_EQ(0, m_link->Write(m_sample));
  EXPECT_STREQ("Write 3 5, ", m_script->calls);
  EXPECT_EQ("Write Error Not named Sample is not valid.\n", m_recorder.TakeFaults());
}

TEST_F(PlcLink, OpensWithoutTheDriverForItsNamesOnly) {
  CPlcLinkConfig* config = Config(3);
  config->m_useDriver = 0;
  EXPECT_EQ(1, OpenWith(config));
  CStringArray names;
  names.Add("kept");
  EXPECT_EQ(0, m_link->GetVarNames(names));
  EXPECT_EQ(0, m_link->Comm(m_sample));
  EXPECT_EQ(1, names.GetSize());
  EXPECT_EQ("Open Begin Not named\nOpen End Not named\n", m_recorder.Take());
  m_sample.m_values.SetSize(3);
  EXPECT_EQ(0, m_link->Read(m_sample));
  EXPECT_EQ(0, m_link->Write(m_sample));
  EXPECT_EQ("Read Fatal Not named Linker is not opened.\nWrite Fatal Not named Linker is not opened.\n",
            m_recorder.TakeFaults());
  m_link->Close();
  EXPECT_STREQ("", m_script->calls);
}

TEST_F(PlcLink, CarriesAllSettingsToTheDriversDialogAndBack) {
  DriverConfig given = {1, 2, 3, 4, 5, 6, 7, 8, 9, "a", "b", 10, 11, 12, 13, 14};
  EXPECT_EQ(0, m_link->SetConfig(given));
  EXPECT_EQ(IDOK, m_link->ShowConfig(0));
  const DriverConfig back = m_link->GetConfig();
  EXPECT_STREQ("SetConfig, ShowConfig 0, GetConfig, ", m_script->calls);
  EXPECT_TRUE(back == given);
  m_script->record.text1 = m_script->record.text2 = nullptr;
  EXPECT_EQ("", m_link->GetConfig().text1.Std() + m_link->GetConfig().text2.Std());
  m_script->showResult = 2;
  EXPECT_EQ(IDCANCEL, m_link->ShowConfig(1));
  m_script->showResult = 0;
  EXPECT_EQ(IDCANCEL, m_link->ShowConfig(1));
  EXPECT_EQ("", m_recorder.Take());
}

TEST_F(PlcLink, GivesTheModuleTheHostThatIsInstalledWhenItIsMade) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  const auto renew = [&] { m_link.reset(factory.NewDriver(factory.GetDriverIndex(SCRIPTED_ID))); };
  const DriverHost host = {DRIVER_HOST_VERSION, nullptr};
  EXPECT_EQ(1, m_script->hosts) << "also a host that offers nothing is given";
  EXPECT_EQ(nullptr, m_script->host);
  EXPECT_EQ(nullptr, InstallDriverHost(&host));
  EXPECT_EQ(nullptr, m_script->host);
  renew();
  EXPECT_EQ(&host, m_script->host);
  EXPECT_EQ(&host, InstallDriverHost(nullptr));
  renew();
  EXPECT_EQ(nullptr, m_script->host);
  EXPECT_EQ(3, m_script->hosts);
}

TEST_F(PlcLink, AnswersForADriverWithoutADialog) {
  m_script->functions.ShowConfig = nullptr;
  m_script->functions.GetConfig = nullptr;
  m_script->functions.SetConfig = nullptr;
  EXPECT_EQ(IDCANCEL, m_link->ShowConfig(1));
  EXPECT_EQ(-1, m_link->SetConfig({}));
  DriverConfig unknown;
  unknown.openState = 100;
  EXPECT_TRUE(m_link->GetConfig() == unknown);
}

}  // namespace
}  // namespace vastra
