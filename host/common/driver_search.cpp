#include "host/common/driver_search.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "host/common/module_trial.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/module.h"

namespace vastra {
namespace {

namespace fs = std::filesystem;

std::vector<CString> g_folderFaults;  // of VASTRA_DRIVERS

// The folders of VASTRA_DRIVERS, as they are written there.
std::vector<CString> FoldersOfVariable() {
  std::vector<CString> folders;
  const char* const variable = std::getenv("VASTRA_DRIVERS");
  std::string_view rest = variable ? variable : "";
  while (!rest.empty()) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    if (colon > 0) folders.emplace_back(rest.substr(0, colon));
    rest.remove_prefix(std::min(colon + 1, rest.size()));
  }
  return folders;
}

bool IsSame(const CString& one, const CString& other) {
  std::error_code ignored;
  return fs::equivalent(one.Std(), other.Std(), ignored);
}

void AddFolder(const CString& folder, CStringArray& folders) {
  const auto isKnown = [&](const CString& known) { return IsSame(known, folder); };
  if (!isKnown(DirectoryOf(ExecutablePath())) && std::ranges::none_of(folders, isKnown)) folders.Add(folder);
}

// The entries of folder that the factory did not look at: folders, links to nothing and the like.
void AddOtherThanFiles(const CString& folder, std::vector<CModuleFile>& files) {
  std::error_code ignored;
  for (const auto& entry : fs::directory_iterator(folder.Std(), ignored)) {
    const CString name(entry.path().filename().string());
    const CString other = OtherThanFile(CString(entry.path().string()));
    if (name.Right(3).CompareNoCase(".so") == 0 && !other.IsEmpty())
      files.push_back({.m_fileName = name, .m_folder = folder, .m_reason = "it is " + other});
  }
}

std::vector<CModuleFile> FindLeftOut(const CDriverFactory& factory) {
  std::vector<CModuleFile> all(factory.GetLeftOut().begin(), factory.GetLeftOut().end());
  for (const CString& folder : factory.GetFolders()) AddOtherThanFiles(folder, all);
  std::ranges::sort(all, {}, [](const CModuleFile& file) { return ShownName(file).Std(); });
  return all;
}

}  // namespace

void SearchDrivers(const std::vector<CString>& folders, bool tries) {
  CDriverSearch search;
  for (const CString& folder : folders) AddFolder(folder, search.m_folders);
  g_folderFaults.clear();
  for (const CString& folder : FoldersOfVariable())
    if (const CString fault = WhyNotSearched(folder); fault.IsEmpty())
      AddFolder(MakeAbsolute(folder), search.m_folders);
    else
      g_folderFaults.push_back("VASTRA_DRIVERS: " + folder + ": " + fault);
  if (tries) search.m_examine = TryModules;
  CDriverFactory::SetSearch(search);
}

CString WhyNotSearched(const CString& folder) {
  std::error_code fault;
  const fs::directory_iterator unused(folder.Std(), fault);
  return fault ? CString(fault.message()) : CString();
}

std::vector<CString> FindModuleFaults() {
  std::vector<CString> lines = g_folderFaults;
  const CDriverFactory& factory = *CDriverFactory::Instance();
  for (const CModuleFile& file : FindLeftOut(factory))
    lines.push_back(ShownName(file) + ": left out: " + file.m_reason);
  for (const CModuleFile& file : factory.GetDrivers()) {
    const CModuleFile& first = factory.GetDrivers()[factory.GetDriverIndex(file.m_id)];
    if (&first != &file)
      lines.push_back(ShownName(file) + ": not used: " + ShownName(first) + " has the same ID " +
                      CString(std::to_string(file.m_id)));
  }
  return lines;
}

CString ShownName(const CModuleFile& file) {
  return file.m_folder == CDriverFactory::Instance()->GetPath() ? file.m_fileName
                                                                : JoinPath(file.m_folder, file.m_fileName);
}

}  // namespace vastra
