#include "vastra/screens/text_list_rules.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

using CNameSet = std::unordered_set<std::string_view>;

}  // namespace

CStringArray LinesOf(const CString& text) {
  CStringArray lines;
  for (int start = 0; start < text.GetLength();) {
    int end = text.Find('\n', start);
    if (end < 0) end = text.GetLength();
    const bool hasReturn = end < text.GetLength() && end > start && text[end - 1] == '\r';
    const CString line = text.Mid(start, end - start - hasReturn);
    if (line.IsEmpty()) break;
    lines.Add(line);
    start = end + 1;
  }
  return lines;
}

CString JoinLines(const CStringArray& lines) {
  CString text;
  for (const CString& line : lines) (text += line) += "\r\n";
  return text;
}

CString ListText(const CStringArray& names) { return JoinLines(names) + "\r\n"; }

bool HasRepeats(const CStringArray& names) {
  CNameSet seen;
  return !std::all_of(names.begin(), names.end(),
                      [&](const CString& name) { return seen.insert(name.View()).second; });
}

CStringArray MissingFrom(const CStringArray& present, const CStringArray& names) {
  CNameSet known;
  for (const CString& name : present) known.insert(name.View());
  CStringArray missing;
  for (const CString& name : names)
    if (!known.contains(name.View())) missing.Add(name);
  return missing;
}

bool ReadTextFile(const CString& path, CString& text) {
  std::error_code failed;
  if (!std::filesystem::is_regular_file(path.Std(), failed)) return false;  // opening a pipe could block
  try {
    CFile file(path, CFile::modeRead);
    if (file.GetLength() > kMaxTextFile) return false;
    std::string bytes(static_cast<std::size_t>(file.GetLength()), '\0');
    bytes.resize(file.Read(bytes.data(), bytes.size()));
    text = CString(std::move(bytes));
    return true;
  } catch (const CFileException&) {
    return false;
  }
}

bool WriteTextFile(const CString& path, const CString& text) {
  std::error_code failed;
  const bool isThere = std::filesystem::exists(path.Std(), failed);
  if (isThere && !std::filesystem::is_regular_file(path.Std(), failed)) return false;
  try {
    SaveFile(path, [&](CFile& file) { file.Write(text, static_cast<std::size_t>(text.GetLength())); });
    return true;
  } catch (const CFileException&) {
    return false;
  }
}

}  // namespace vastra
