#include "vastra/plc/driver_factory.h"

#include "vastra/platform/file_system.h"
#include "vastra/plc/driver_call.h"
#include "vastra/plc/plc_link.h"

namespace vastra {

SingletonSmartPtr<CDriverFactory> CDriverFactory::m_Instance;

CDriverFactory* CDriverFactory::Instance() {
  if (!m_Instance) m_Instance = new CDriverFactory;
  return m_Instance;
}

CDriverFactory::CDriverFactory() {
  const CString executable = ExecutablePath();
  if (executable.IsEmpty()) return;
  m_path = DirectoryOf(executable);
  SetCurrentDirectory(m_path);
  for (const CFileEntry& file : ListFiles(m_path, ".so")) Examine(file.m_name);
}

void CDriverFactory::Examine(const CString& fileName) {
  CString reason;
  const HMODULE module = LoadModule(JoinPath(m_path, fileName), &reason);
  if (!module) {
    m_leftOut.Add({fileName, reason});
    return;
  }
  DriverHeader header = {};
  if (AskHeader(module, header))
    m_drivers.Add({header.id, fileName, header.name});
  else
    m_leftOut.Add({fileName, "no GetDriverHeader"});
  FreeModule(module);
}

CString CDriverFactory::GetDriverName(int index) const {
  return Has(index) ? m_drivers[index].m_name : CString();
}

int CDriverFactory::GetDriverID(int index) const { return Has(index) ? m_drivers[index].m_id : -1; }

int CDriverFactory::GetDriverIndex(int id) const {
  for (int i = 0; i < m_drivers.GetSize(); ++i)
    if (m_drivers[i].m_id == id) return i;
  return -1;
}

HMODULE CDriverFactory::Load(int index) const {
  return Has(index) ? LoadModule(JoinPath(m_path, m_drivers[index].m_fileName)) : nullptr;
}

CPlcLink* CDriverFactory::NewDriver(int index) const {
  const HMODULE module = Load(index);
  return module ? new CPlcLink(module) : nullptr;
}

namespace {

// The answer of the module's export to config. Null, empty and no such export: empty.
CString AskQuestion(HMODULE module, const char* name, const DriverConfig& config, const CString& ifThrown) {
  const CDriverQuestion ask = module ? FindQuestion(module, name) : nullptr;
  if (!ask) return CString();
  return AskDriver(ifThrown, [&] { return CopyDriverText(ask(ToRecord(config))); });
}

}  // namespace

CString CDriverFactory::CheckConfig(int index, const DriverConfig& config) const {
  const HMODULE module = Load(index);
  const CString fault =
      AskQuestion(module, "CheckDriverConfig", config, "the driver's check threw an exception");
  FreeModule(module);
  return fault;
}

CString CDriverFactory::LineOf(int index, const DriverConfig& config) const {
  const HMODULE module = Load(index);
  const CString line = AskQuestion(module, "GetDriverLine", config, "");
  FreeModule(module);
  return line;
}

}  // namespace vastra
