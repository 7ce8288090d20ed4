// vastra drivers: the driver modules in this program's folder.
#include <algorithm>
#include <filesystem>

#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/output.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/paths.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

std::vector<std::string> Table(const CDriverFactory& factory) {
  std::vector<std::string> table;
  int index = 0;
  for (const CDriverFactory::CDriverInfo& driver : factory.GetDrivers()) {
    CString line;
    line.Format("%3d  %10d  ", index++, driver.m_id);
    table.push_back((line + driver.m_name + "  (" + driver.m_fileName + ")").Std());
  }
  return table;
}

CJson List(const CDriverFactory& factory) {
  CJson list = CJson::array();
  for (const CDriverFactory::CDriverInfo& driver : factory.GetDrivers())
    list.push_back({{"index", list.size()},
                    {"id", driver.m_id},
                    {"name", ToJson(driver.m_name)},
                    {"file", ToJson(driver.m_fileName)}});
  return list;
}

// What is not a driver, in byte order of the names: the files that the factory passed over, and folders and
// the like, at which the factory does not look.
std::vector<CDriverFactory::CLeftOut> FindLeftOut(const CDriverFactory& factory) {
  std::vector<CDriverFactory::CLeftOut> all(factory.GetLeftOut().begin(), factory.GetLeftOut().end());
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(factory.GetPath().Std(), ignored)) {
    const CString name(entry.path().filename().string());
    const CString other = OtherThanFile(CString(entry.path().string()));
    if (name.Right(3).CompareNoCase(".so") == 0 && !other.IsEmpty()) all.push_back({name, "it is " + other});
  }
  std::ranges::sort(all, {}, [](const auto& file) { return file.m_fileName.View(); });
  return all;
}

EExit PrintDrivers(bool asJson) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  for (const CDriverFactory::CLeftOut& file : FindLeftOut(factory))
    CTerminal::Instance().Line("vastra: " + file.m_fileName + ": left out: " + file.m_reason, kWarningColour);
  return asJson ? PrintJson(List(factory)) : PrintLines(Table(factory));
}

}  // namespace

CAction DeclareDrivers(CArguments& arguments) {
  const auto asJson = arguments.Flag("--json", "Print one array of objects");
  return [asJson] { return PrintDrivers(*asJson); };
}

}  // namespace vastra
