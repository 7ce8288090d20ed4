// CLogList: the logs of one kind in a directory, oldest first, and which of them go when there are too many.
#pragma once

#include <string>
#include <unordered_map>

#include "vastra/platform/list.h"

namespace vastra {

class CLogList {
 public:
  // Makes the files of directory whose name ends in extension, letter case ignored, the list, in the order in
  // which they were last written; of several that were written at once in the order of their names.
  void CreateFileList(const CString& directory, const CString& extension);
  // Appends a log, by its bare name with its extension.
  void Add(const CString& name);
  // Removes the oldest logs of directory until the list has maxLogs of them.
  void Rotate(const CString& directory, UINT maxLogs);

  int GetCount() const { return m_names.GetCount(); }

 private:
  int RemoveFile(const CString& directory);

  CStringList m_names;
  std::unordered_map<std::string, int> m_uses;  // how often each name stands in the list
};

}  // namespace vastra
