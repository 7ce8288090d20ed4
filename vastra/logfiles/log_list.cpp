#include "vastra/logfiles/log_list.h"

#include <algorithm>

#include "vastra/platform/file_system.h"

namespace vastra {

void CLogList::CreateFileList(const CString& directory, const CString& extension) {
  m_names.RemoveAll();
  m_uses.clear();
  CArray<CFileEntry> files = ListFiles(directory, extension);
  std::stable_sort(files.begin(), files.end(),
                   [](const CFileEntry& a, const CFileEntry& b) { return a.m_lastWrite < b.m_lastWrite; });
  for (const CFileEntry& file : files) Add(file.m_name);
}

void CLogList::Add(const CString& name) {
  m_names.AddTail(name);
  ++m_uses[name.Std()];
}

std::vector<CString> CLogList::Rotate(const CString& directory, UINT maxLogs) {
  std::vector<CString> gone;
  CString name;
  while (static_cast<UINT>(m_names.GetCount()) > maxLogs)
    if (RemoveFile(directory, name)) gone.push_back(name);
  return gone;
}

// Removes the oldest entry and deletes its file, name, unless the list contains the name again: then a newer
// log has replaced the file. If the file stays (0), the entry is removed all the same.
int CLogList::RemoveFile(const CString& directory, CString& name) {
  name = m_names.RemoveHead();
  const auto use = m_uses.find(name.Std());
  if (--use->second > 0) return 0;
  m_uses.erase(use);
  const CString path = JoinPath(directory, name);
  return FileExists(path) ? DeleteFile(path) : 1;
}

}  // namespace vastra
