// CLogList: the logs of one kind in a directory, oldest first. Removes the oldest when there are too many.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "vastra/platform/list.h"

namespace vastra {

class CLogList {
 public:
  // Fills the list with the files of directory whose names end in extension, ignoring case, in the order of
  // their last write times; files with equal times in the order of their names.
  void CreateFileList(const CString& directory, const CString& extension);
  // Appends a log by its file name without the directory.
  void Add(const CString& name);
  // Removes the oldest logs of directory until the list has maxLogs entries. Returns the names of those whose
  // files are gone.
  std::vector<CString> Rotate(const CString& directory, UINT maxLogs);

  int GetCount() const { return m_names.GetCount(); }

 private:
  int RemoveFile(const CString& directory, CString& name);

  CStringList m_names;
  std::unordered_map<std::string, int> m_uses;  // how often each name is in the list
};

}  // namespace vastra
