#include "host/desktop/document.h"

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"
#include "host/common/paths.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

bool IsJsonPath(const CString& path) { return path.Right(5).CompareNoCase(".json") == 0; }

CString SaveAsJson(const CString& path, CConfiguration& configuration) {
  std::string text;
  CString fault = ConfigurationToJson(configuration, text);
  if (!fault.IsEmpty()) return fault + "; a configuration file, .vst, can hold it";
  try {
    SaveFile(path, [&](CFile& file) { file.Write(text.data(), text.size()); });
    return {};
  } catch (const CFileException& failed) {
    return failed.Text();
  }
}

// Calls action with each log folder.
template <class ACTION>
void ForEachDirectory(CConfiguration& configuration, ACTION action) {
  for (COutputConfig* output : configuration.m_outputs.m_outputs) action(output->m_directory);
  for (CSummaryConfig* summary : configuration.m_summaries.m_summaries) action(summary->m_directory);
}

void MakeAbsoluteIn(const CString& folder, CConfiguration& configuration) {
  ForEachDirectory(configuration, [&](CString& directory) { directory = MakeAbsolute(folder, directory); });
}

CStringArray Directories(CConfiguration& configuration) {
  CStringArray directories;
  ForEachDirectory(configuration, [&](const CString& directory) { directories.Add(directory); });
  return directories;
}

// The key in a line of LostInFile; the rest of the line names the version.
CString KeyOf(const CString& line) { return line.Left(line.Find(':')); }

CStringArray KeysOf(CStringArray lines) {
  for (CString& line : lines) line = KeyOf(line);
  return lines;
}

}  // namespace

CDocument::CDocument() : m_startFolder(MakeAbsolute(".")) {}

void CDocument::New() {
  m_configuration = {};
  m_storedBaseVars.RemoveAll();
  m_path.Empty();
  m_open = true;
  m_changed = false;
}

CString CDocument::Open(const CString& path) {
  const CString fault = LoadConfiguration(MakeAbsolute(path), m_configuration);
  if (!fault.IsEmpty()) return path + ": " + fault;
  m_storedBaseVars = m_configuration.m_trend.m_baseVars;
  m_path = MakeAbsolute(path);
  m_open = true;
  m_changed = false;
  return {};
}

CString CDocument::Save(const CString& path) {
  CConfiguration stored = Stored();
  MakeAbsoluteIn(DirectoryOf(MakeAbsolute(path)), stored);
  const CString fault = IsJsonPath(path) ? SaveAsJson(path, stored) : SaveConfiguration(path, stored);
  if (!fault.IsEmpty()) return path + ": " + fault;
  m_path = MakeAbsolute(path);
  m_changed = false;
  MakeAbsoluteIn(Folder(), m_configuration);
  return {};
}

CString CDocument::Folder() const { return m_path.IsEmpty() ? m_startFolder : DirectoryOf(m_path); }

CStringArray CDocument::Lost() { return IsJsonPath(m_path) ? CStringArray() : LostInFile(m_configuration); }

CStringArray CDocument::LostToVersion(const CString& path) {
  if (IsJsonPath(path) || m_configuration.m_version == kVersionNewest) return {};
  CConfiguration newest = m_configuration;
  newest.m_version = kVersionNewest;
  const CStringArray lostAnyway = KeysOf(LostInFile(newest));
  CStringArray lines;
  for (const CString& line : LostInFile(m_configuration))
    if (FindIn(lostAnyway, KeyOf(line)) < 0) lines.Add(line);
  return lines;
}

CConfiguration CDocument::Stored() const {
  CConfiguration stored = m_configuration;
  stored.m_trend.m_baseVars = m_storedBaseVars;
  return stored;
}

CConfiguration CDocument::ForRun() const {
  CConfiguration configuration = Stored();
  MakeAbsoluteIn(m_startFolder, configuration);
  return configuration;
}

bool CDocument::Take(CConfiguration edited) {
  const CStringArray former = Directories(m_configuration);
  ForEachDirectory(edited, [&](CString& directory) {
    if (!m_path.IsEmpty() && FindIn(former, directory) < 0) directory = MakeAbsolute(Folder(), directory);
  });
  if (IsSame(m_configuration, edited)) return false;
  m_configuration = std::move(edited);
  return m_changed = true;
}

void CDocument::TakeBaseVars(const CStringArray& names) {
  if (!m_storedBaseVars.IsEmpty()) m_storedBaseVars = names;
}

}  // namespace vastra
