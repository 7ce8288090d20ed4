#include "host/desktop/document.h"

#include "host/common/configuration_file.h"
#include "host/common/configuration_json.h"
#include "host/common/paths.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

bool IsJsonPath(const CString& path) { return path.Right(5).CompareNoCase(".json") == 0; }

CString SaveAsJson(const CString& path, CConfiguration& configuration) {
  std::string text;
  CString fault = ConfigurationToJson(configuration, text);
  if (!fault.IsEmpty()) return fault;
  try {
    SaveFile(path, [&](CFile& file) { file.Write(text.data(), text.size()); });
    return {};
  } catch (const CFileException& failed) {
    return failed.Text();
  }
}

// What a line is about: the words behind it name the version.
CString KeyOf(const CString& line) { return line.Left(line.Find(':')); }

CStringArray KeysOf(CStringArray lines) {
  for (CString& line : lines) line = KeyOf(line);
  return lines;
}

}  // namespace

void CDocument::New() {
  *this = {};
  m_open = true;
}

CString CDocument::Open(const CString& path) {
  const CString fault = LoadConfiguration(MakeAbsolute(path), m_configuration);
  if (!fault.IsEmpty()) return path + ": " + fault;
  m_path = MakeAbsolute(path);
  m_open = true;
  m_changed = false;
  return {};
}

CString CDocument::Save(const CString& path) {
  const CString fault =
      IsJsonPath(path) ? SaveAsJson(path, m_configuration) : SaveConfiguration(path, m_configuration);
  if (!fault.IsEmpty()) return path + ": " + fault;
  m_path = path;
  m_changed = false;
  return {};
}

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

void CDocument::TakeTrend(const CTrendConfig& trend) {
  CTrendConfig& mine = m_configuration.m_trend;
  const bool isSame = mine.m_extraVars == trend.m_extraVars && mine.m_equationText == trend.m_equationText &&
                      mine.m_equations == trend.m_equations &&
                      mine.m_calculateExtra == trend.m_calculateExtra;
  if (isSame) return;
  const CStringArray baseVars = mine.m_baseVars;
  mine = trend;
  mine.m_baseVars = baseVars;
  m_changed = true;
}

bool CDocument::Take(CConfiguration& edited) {
  if (IsSame(m_configuration, edited)) return false;
  m_configuration = edited;
  return m_changed = true;
}

}  // namespace vastra
