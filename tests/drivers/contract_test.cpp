// One list of calls over each driver that the factory finds: ours, that of the guide, and faulty ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "tests/support/recorder.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/module.h"
#include "vastra/platform/prompt.h"
#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"

namespace vastra {
namespace {

// The modules in the folder of the test, in the order of the list, and the message of each failing operation.
struct CDriverCase {
  const char* file;
  int id;
  const char* name;
  const char* open = "";
  const char* read = "";
  const char* write = "";
};
constexpr const char* kUnknown = "Error Not named Unknown error.";
constexpr const char* kFormat = "Error Not named %s%n%s 100%";
constexpr const char* kNoOpen = "Fatal Not named Couldn't open driver.";
constexpr CDriverCase kDrivers[] = {
    {"Upper.SO", 9101, "Upper"},
    {"format.so", 9102, "%s%n", "", kFormat},
    {"modbus.so", 9002, "Modbus",
     "Fatal Not named Modbus: text1: it is empty: the device is host:port, or /dev/ttyUSB0:19200,8,E,1 on a "
     "serial line"},
    {"null_name.so", 9104, ""},
    {"null_table.so", 9106, "No table", kNoOpen},
    {"simulator.so", 9001, "Simulator"},
    {"textfile.so", 9900, "Text file", "Fatal Not named Text file: text1 is no file that can be read."},
    {"textfile_dialog.so", 9900, "Text file's dialog", kNoOpen},
    {"throwing_0.so", 9112, "Throwing", "", kUnknown, kUnknown},
    {"throwing_1.so", 9212, "Throwing", "Fatal Not named Unknown error."},
    {"twin_1.so", 9108, "Twin 1"},
    {"twin_2.so", 9108, "Twin 2"},
    {"version_1.so", -9110, "One"},
};
constexpr int kDriverCount = static_cast<int>(std::size(kDrivers));

CDriverFactory& Factory() { return *CDriverFactory::Instance(); }

TEST(DriverFactory, ListsTheDriversInByteOrderOfTheirFiles) {
  ASSERT_EQ(Factory().GetDriverCount(), kDriverCount);
  for (int i = 0; i < kDriverCount; ++i) {
    EXPECT_EQ(Factory().GetDrivers()[i].m_fileName.Std(), kDrivers[i].file);
    EXPECT_EQ(Factory().GetDriverID(i), kDrivers[i].id);
    EXPECT_EQ(Factory().GetDriverName(i).Std(), kDrivers[i].name);
  }
}

TEST(DriverFactory, SaysWhyItLeftAFileOut) {
  std::string found;
  for (const CDriverFactory::CLeftOut& file : Factory().GetLeftOut()) {
    found += file.m_fileName.Std() + " ";
    const bool loads = file.m_fileName == "no_export.so";
    EXPECT_EQ(loads, file.m_reason == "no GetDriverHeader") << file.m_reason.Std();
    EXPECT_FALSE(file.m_reason.IsEmpty());
  }
  EXPECT_EQ(found, "empty.so no_export.so text.so unresolved.so ");
}

TEST(DriverFactory, FindsTheFirstOfTwoWithOneIdAndNothingBeyondTheList) {
  const int first = Factory().GetDriverIndex(9108);
  EXPECT_EQ(Factory().GetDriverName(first).Std(), "Twin 1");
  EXPECT_EQ(Factory().GetDriverIndex(4711), -1);
  for (const int index : {-2147483647 - 1, -1, kDriverCount, 2147483647}) {
    EXPECT_EQ(Factory().GetDriverName(index).Std(), "");
    EXPECT_EQ(Factory().GetDriverID(index), -1);
    EXPECT_EQ(Factory().NewDriver(index), nullptr);
  }
}

TEST(DriverFactory, MakesItsFolderTheCurrentDirectoryForGood) {
  EXPECT_EQ(Factory().GetPath().Std(), DirectoryOf(ExecutablePath()).Std());
  EXPECT_EQ(std::filesystem::current_path().string(), Factory().GetPath().Std());
}

TEST(DriverFactory, GivesNoLinkOnAModuleThatHasGone) {
  struct CLateFactory : CDriverFactory {
    CLateFactory() { m_drivers.Add({1, "gone.so", "Gone"}); }
  } factory;
  EXPECT_EQ(factory.NewDriver(kDriverCount), nullptr);
}

class CDriver : public testing::TestWithParam<int> {
 protected:
  const CDriverCase& Case() const { return kDrivers[GetParam()]; }
  std::unique_ptr<CPlcLink> NewLink() const {
    return std::unique_ptr<CPlcLink>(Factory().NewDriver(GetParam()));
  }
  static int Open(CPlcLink& link, UINT count, int useDriver = 1, int station = 0) {
    CLinkConfigList configs;
    auto* config = new CPlcLinkConfig;
    config->m_config.variableCount = count;
    config->m_config.station = station;
    config->m_useDriver = useDriver;
    configs.AddTail(config);
    return link.Open(configs, CLink::modeRead);
  }
  // The one line of operation, if it failed, and that each Begin has its end.
  void ExpectFault(const char* operation, const char* fault, int result) {
    const std::string lines = m_recorder.Take();
    const std::string wanted =
        *fault ? std::string(operation) + " " + fault : operation + std::string(" End Not named");
    EXPECT_EQ(lines, operation + std::string(" Begin Not named\n") + wanted + "\n");
    EXPECT_EQ(result == 1, *fault == 0);
  }

  CRecorder m_recorder;
};

TEST_P(CDriver, KeepsTheContractOfALink) {
  const std::unique_ptr<CPlcLink> link = NewLink();
  ASSERT_TRUE(link);
  CLogSample sample;
  sample.m_values.SetSize(2);
  ExpectFault("Read", "Fatal Not named Linker is not opened.", link->Read(sample));
  ExpectFault("Open", "Fatal Not named Plc has no variables.", Open(*link, 0));
  ExpectFault("Open", "", Open(*link, 2, 0));
  link->Close();
  m_recorder.Take();
  for (int run = 0; run < 2; ++run) {
    ExpectFault("Open", Case().open, Open(*link, 2));
    const bool open = !*Case().open;
    const char* closed = "Fatal Not named Linker is not opened.";
    ExpectFault("Read", open ? Case().read : closed, link->Read(sample));
    ExpectFault("Write", open ? Case().write : closed, link->Write(sample));
    EXPECT_EQ(sample.m_values.GetSize(), 2);
    link->Close();
    m_recorder.Take();
  }
  Open(*link, 2);  // and is deleted while it is open
}

TEST_P(CDriver, AnswersToItsDialogFunctions) {
  const std::unique_ptr<CPlcLink> link = NewLink();
  const int set = link->SetConfig({});
  EXPECT_TRUE(set == 0 || set == -1);
  const int shown = link->ShowConfig(1);
  EXPECT_TRUE(shown == IDOK || shown == IDCANCEL);
  EXPECT_EQ(link->GetConfig().text1.Std(), "");
  EXPECT_EQ(m_recorder.Take(), "");
}

TEST_P(CDriver, ServesTwoHandlesOnTwoThreads) {
  const std::unique_ptr<CPlcLink> links[] = {NewLink(), NewLink()};
  std::vector<std::thread> threads;
  for (const auto& link : links)
    threads.emplace_back([&link, opens = !*Case().open, reads = !*Case().open && !*Case().read] {
      CLogSample sample;
      for (int run = 0; run < 20; ++run) {
        EXPECT_EQ(Open(*link, 3, 1, run % 2) == 1, opens);
        for (int i = 0; i < 20; ++i) EXPECT_EQ(link->Read(sample) == 1, reads);
      }
    });
  for (std::thread& thread : threads) thread.join();
}

INSTANTIATE_TEST_SUITE_P(Each, CDriver, testing::Range(0, kDriverCount), [](const auto& driver) {
  std::string name = kDrivers[driver.param].file;
  std::replace(name.begin(), name.end(), '.', '_');
  return name;
});

}  // namespace
}  // namespace vastra
