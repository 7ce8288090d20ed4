// vastra drivers: the driver modules in this program's folder and in those that were added.
#include "host/cli/command.h"
#include "host/cli/driver_folders.h"
#include "host/cli/json_output.h"
#include "host/cli/output.h"
#include "host/common/driver_search.h"

namespace vastra {
namespace {

std::vector<std::string> Table(const CDriverFactory& factory) {
  std::vector<std::string> table;
  int index = 0;
  for (const CModuleFile& driver : factory.GetDrivers()) {
    CString line;
    line.Format("%3d  %10d  ", index++, driver.m_id);
    table.push_back((line + driver.m_name + "  (" + ShownName(driver) + ")").Std());
  }
  return table;
}

CJson List(const CDriverFactory& factory) {
  CJson list = CJson::array();
  for (const CModuleFile& driver : factory.GetDrivers())
    list.push_back({{"index", list.size()},
                    {"id", driver.m_id},
                    {"name", ToJson(driver.m_name)},
                    {"file", ToJson(ShownName(driver))}});
  return list;
}

EExit PrintDrivers(const CDriverFolders& folders, bool asJson) {
  if (folders.Search() != kDone) return kWrongUse;
  WarnOfModules();
  const CDriverFactory& factory = *CDriverFactory::Instance();
  return asJson ? PrintJson(List(factory)) : PrintLines(Table(factory));
}

}  // namespace

CAction DeclareDrivers(CArguments& arguments) {
  const CDriverFolders folders(arguments);
  const auto asJson = arguments.Flag("--json", "Print one array of objects");
  return [=] { return PrintDrivers(folders, *asJson); };
}

}  // namespace vastra
