// vastra drivers: the driver modules that were found beside this program.
#include "host/cli/command.h"
#include "host/cli/json_output.h"
#include "host/cli/output.h"
#include "host/cli/terminal.h"
#include "vastra/plc/driver_factory.h"

namespace vastra {
namespace {

std::string Table(const CDriverFactory& factory) {
  std::string table;
  int index = 0;
  for (const CDriverFactory::CDriverInfo& driver : factory.GetDrivers()) {
    CString line;
    line.Format("%3d  %10d  ", index++, driver.m_id);
    table += (line + driver.m_name + "  (" + driver.m_fileName + ")\n").Std();
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

EExit PrintDrivers(bool asJson) {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  for (const CDriverFactory::CLeftOut& file : factory.GetLeftOut())
    CTerminal::Instance().Line("vastra: " + file.m_fileName + ": left out: " + file.m_reason, kWarningColour);
  return asJson ? PrintJson(List(factory)) : PrintData(Table(factory));
}

}  // namespace

CAction DeclareDrivers(CArguments& arguments) {
  const auto asJson = arguments.Flag("--json", "Print one array of objects");
  return [asJson] { return PrintDrivers(*asJson); };
}

}  // namespace vastra
