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

}  // namespace

CString CDocument::Open(const CString& path) {
  const CString fault = LoadConfiguration(MakeAbsolute(path), m_configuration);
  if (!fault.IsEmpty()) return path + ": " + fault;
  m_path = MakeAbsolute(path);
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

}  // namespace vastra
