#include "vastra/plc/driver_factory.h"

#include <algorithm>

#include "vastra/platform/file_system.h"
#include "vastra/plc/driver_call.h"
#include "vastra/plc/plc_link.h"

namespace vastra {

SingletonSmartPtr<CDriverFactory> CDriverFactory::m_Instance;

namespace {

CDriverSearch g_search;

void LoadAndAsk(CModuleFile& file) {
  file.m_loadPath = JoinPath(file.m_folder, file.m_fileName);
  const HMODULE module = LoadModule(file.m_loadPath, &file.m_reason);
  if (!module) return;
  DriverHeader header = {};
  if (AskHeader(module, header)) {
    file.m_id = header.id;
    file.m_name = header.name;
  } else {
    file.m_reason = "no GetDriverHeader";
  }
  FreeModule(module);
}

void LoadAll(CArray<CModuleFile>& files) {
  for (CModuleFile& file : files) LoadAndAsk(file);
}

}  // namespace

void CDriverFactory::SetSearch(const CDriverSearch& search) { g_search = search; }

void CDriverFactory::SearchAgain() {
  delete static_cast<CDriverFactory*>(m_Instance);
  m_Instance = nullptr;
}

CDriverFactory* CDriverFactory::Instance() {
  if (!m_Instance) m_Instance = new CDriverFactory(g_search);
  return m_Instance;
}

CDriverFactory::CDriverFactory(const CDriverSearch& search) {
  const CString executable = ExecutablePath();
  if (!executable.IsEmpty()) {
    m_path = DirectoryOf(executable);
    SetCurrentDirectory(m_path);
    m_folders.Add(m_path);
  }
  m_folders.Append(search.m_folders);
  CArray<CModuleFile> files;
  for (const CString& folder : m_folders) FindFiles(folder, files);
  (search.m_examine ? search.m_examine : LoadAll)(files);
  for (const CModuleFile& file : files) (file.m_reason.IsEmpty() ? m_drivers : m_leftOut).Add(file);
}

void CDriverFactory::FindFiles(const CString& folder, CArray<CModuleFile>& files) {
  for (const CFileEntry& entry : ListFiles(folder, ".so")) {
    const auto first = std::ranges::find(files, entry.m_name, &CModuleFile::m_fileName);
    CModuleFile file = {.m_fileName = entry.m_name, .m_folder = folder};
    if (first == files.end()) {
      files.Add(file);
    } else {
      file.m_reason = "the file of this name in " + first->m_folder + " is used";
      m_leftOut.Add(file);
    }
  }
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
  return Has(index) ? LoadModule(m_drivers[index].m_loadPath) : nullptr;
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
  CString fault = AskQuestion(module, "CheckDriverConfig", config, "the driver's check threw an exception");
  FreeModule(module);
  return fault;
}

CString CDriverFactory::LineOf(int index, const DriverConfig& config) const {
  const HMODULE module = Load(index);
  CString line = AskQuestion(module, "GetDriverLine", config, "");
  FreeModule(module);
  return line;
}

}  // namespace vastra
