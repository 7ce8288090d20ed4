// One list of calls over each driver that the factory finds: ours, that of the guide, and faulty ones.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/drivers/driver_node.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/module.h"
#include "vastra/platform/prompt.h"

namespace vastra {
namespace {

constexpr const char* kUnknown = "Error Not named Unknown error.";
constexpr const char* kFormat = "Error Not named %s%n%s 100%";
constexpr const char* kNoOpen = "Fatal Not named Couldn't open driver.";
constexpr const char* kClosed = "Fatal Not named Linker is not opened.";
// The modules in the folder of the test, in the order of the list, and the message of each failing operation.
constexpr struct {
  const char* file;
  int id;
  const char* name;
  const char *open = "", *read = "", *write = "";
} kDrivers[] = {
    {"Upper.SO", 9101, "Upper"},
    {"format.so", 9102, "%s%n", "", kFormat},
    {"modbus.so", 9002, "Modbus",
     "Fatal Not named Modbus: text1: it is empty: the device is host:port, or /dev/ttyUSB0:19200,8,E,1 on a "
     "serial line"},
    {"null_name.so", 9104, ""},
    {"null_table.so", 9106, "No table", kNoOpen},
    {"simulator.so", 9001, "Simulator"},
    {"textfile.so", 9900, "Text file", "Fatal Not named Text file: text1 is not a readable file."},
    {"textfile_dialog.so", 9900, "Text file's dialog", kNoOpen},
    {"throwing_0.so", 9112, "Throwing", "", kUnknown, kUnknown},
    {"throwing_1.so", 9212, "Throwing", "Fatal Not named Unknown error."},
    {"twin_1.so", 9108, "Twin 1"},
    {"twin_2.so", 9108, "Twin 2"},
    {"version_1.so", -9110, "One"},
};
constexpr int kCount = static_cast<int>(std::size(kDrivers));

CDriverFactory& Factory() { return *CDriverFactory::Instance(); }

TEST(DriverFactory, ListsTheDriversByFileSaysWhyItLeftOthersOutAndFindsTheFirstOfAnId) {
  ASSERT_EQ(Factory().GetDriverCount(), kCount);
  for (int i = 0; i < kCount; ++i) {
    EXPECT_EQ(Factory().GetDrivers()[i].m_fileName.Std(), kDrivers[i].file);
    EXPECT_EQ(Factory().GetDriverID(i), kDrivers[i].id);
    EXPECT_EQ(Factory().GetDriverName(i).Std(), kDrivers[i].name);
  }
  std::string found;
  for (const CModuleFile& file : Factory().GetLeftOut()) {
    EXPECT_FALSE(file.m_reason.IsEmpty());
    found += file.m_fileName.Std() + (file.m_reason == "no GetDriverHeader" ? "*, " : ", ");
  }
  EXPECT_EQ(found, "empty.so, no_export.so*, text.so, unresolved.so, ");
  EXPECT_EQ(Factory().GetPath().Std(), DirectoryOf(ExecutablePath()).Std());
  EXPECT_EQ(std::filesystem::current_path().string(), Factory().GetPath().Std());
  EXPECT_EQ(Factory().GetDriverName(Factory().GetDriverIndex(9108)).Std(), "Twin 1");
  EXPECT_EQ(Factory().GetDriverIndex(4711), -1);
  for (const int index : {-2147483647 - 1, -1, kCount, 2147483647}) {
    EXPECT_EQ(Factory().GetDriverName(index).Std(), "");
    EXPECT_EQ(Factory().GetDriverID(index), -1);
    EXPECT_EQ(Factory().NewDriver(index), nullptr);
  }
  struct CLateFactory : CDriverFactory {
    CLateFactory() : CDriverFactory({}) {
      m_drivers.Add({.m_fileName = "gone.so", .m_loadPath = "/gone.so"});
    }
  } factory;
  EXPECT_EQ(factory.NewDriver(kCount), nullptr);
}

TEST(DriverFactory, AsksAModuleOfVersion3AboutSettings) {
  const struct {
    int id;
    const char *text1, *text2;
    std::string fault, line = "";
  } kRows[] = {
      {9002, "plc", "h0, h1 x 2", "text2: it lists 3 value(s), and the node has 2 variable(s)"},
      {9002, "plc:0", "h0 x 2", "text1: \"0\" is not a port: 1 to 65535"},
      {9002, "/dev/./null:9600,8,N,1", "h0 x 2", "station: 0 is not a unit on a serial line: 1 to 247",
       "/dev/null"},
      {9002, "plc", "h0 x 2", ""},
      {9900, "", "", "text1 is empty: it is the path of a text file."},
      {9101, "", "shared", "", "shared"},
      {9101, "x", "", std::string(1999, 'x')},
      {-9110, "x", "shared", ""},
      {9112, "", "", "the driver's check threw an exception"},
      {4711, "", "", ""},
  };
  for (const auto& [id, text1, text2, fault, line] : kRows) {
    const DriverConfig config = {.variableCount = 2, .text1 = text1, .text2 = text2};
    const int index = Factory().GetDriverIndex(id);
    EXPECT_EQ(Factory().CheckConfig(index, config).Std(), fault) << id << text1;
    EXPECT_EQ(Factory().LineOf(index, config).Std(), line) << id << text1;
  }
}

void ExpectFault(CRecorder& recorder, const std::string& operation, const std::string& fault, int result) {
  const std::string end = fault.empty() ? "End Not named" : fault;
  EXPECT_EQ(recorder.Take(), operation + " Begin Not named\n" + operation + " " + end + "\n");
  EXPECT_EQ(result == 1, fault.empty());
}

TEST(Drivers, KeepTheContractOfALink) {
  for (int i = 0; i < kCount; ++i) {
    SCOPED_TRACE(kDrivers[i].file);
    CRecorder recorder;
    const std::unique_ptr<CPlcLink> link(Factory().NewDriver(i));
    CLogSample sample;
    sample.m_values.SetSize(2);
    const auto& [file, id, name, open, read, write] = kDrivers[i];
    for (int run = 0; run < 2; ++run) {
      ExpectFault(recorder, "Open", open, Open(*link, {}, 2));
      ExpectFault(recorder, "Read", *open ? kClosed : read, link->Read(sample));
      ExpectFault(recorder, "Write", *open ? kClosed : write, link->Write(sample));
      EXPECT_EQ(sample.m_values.GetSize(), 2);
      link->Close();
      recorder.Take();
    }
    const int set = link->SetConfig({}), shown = link->ShowConfig(1);
    EXPECT_TRUE(set == 0 || set == -1);
    EXPECT_TRUE(shown == IDOK || shown == IDCANCEL);
    EXPECT_EQ(link->GetConfig().text1.Std(), "");
    EXPECT_EQ(recorder.Take(), "");
    Open(*link, {}, 2);  // and is deleted while it is open
  }
}

}  // namespace
}  // namespace vastra
