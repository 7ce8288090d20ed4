// CHistoryPaths: the logs, journals and folders that convert and inspect are given, as a catalogue.
#pragma once

#include "host/cli/arguments.h"
#include "vastra/history/catalogue.h"

namespace vastra {

bool IsFolder(const CString& path);

class CHistoryPaths {
 public:
  // Looks at the paths, and with isRecursive at the folders below them.
  CHistoryPaths(const std::vector<CFileArgument>& arguments, bool isRecursive);

  const std::vector<CHistoryLog>& Logs() const { return m_catalogue.Logs(); }
  // A path of the catalogue as the user would type it: below the argument that it was found by.
  CString Shown(const CString& path) const;
  // The argument by which the log at path was found.
  std::size_t ArgumentOf(const CString& path) const;
  // Whether path is an argument itself.
  bool IsArgument(const CString& path) const;
  // Whether the file at path is one of the logs, by links too.
  bool HasFile(const CString& path) const;

 private:
  std::vector<CFileArgument> m_arguments;
  CCatalogue m_catalogue;
};

}  // namespace vastra
