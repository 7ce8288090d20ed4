#include "host/cli/history/history_paths.h"

#include <algorithm>

#include "host/cli/files.h"
#include "vastra/platform/file_layer.h"

namespace vastra {
namespace {

// What is after folder and its slash in path; "" if path is not below it.
std::string_view PartBelow(std::string_view path, std::string_view folder) {
  while (folder.ends_with('/')) folder.remove_suffix(1);
  if (!path.starts_with(folder) || !path.substr(folder.size()).starts_with('/')) return {};
  path.remove_prefix(folder.size());
  while (path.starts_with('/')) path.remove_prefix(1);
  return path;
}

}  // namespace

bool IsFolder(const CString& path) {
  CFileStatus status;
  return FileLayer().Stat(path, status) && status.type == EFileType::folder;
}

CHistoryPaths::CHistoryPaths(const std::vector<CFileArgument>& arguments, bool isRecursive)
    : m_arguments(arguments) {
  for (const CFileArgument& argument : m_arguments) m_catalogue.Add(argument.path, isRecursive);
  m_catalogue.Scan();
}

CString CHistoryPaths::Shown(const CString& path) const {
  const CFileArgument& argument = m_arguments[ArgumentOf(path)];
  const std::string_view below = PartBelow(path.View(), argument.path.View());
  if (below.empty()) return path == argument.path ? argument.typed : path;
  return CString(argument.typed.Std() + (argument.typed.View().ends_with('/') ? "" : "/") +
                 std::string(below));
}

std::size_t CHistoryPaths::ArgumentOf(const CString& path) const {
  for (std::size_t i = 0; i < m_arguments.size(); ++i)
    if (path == m_arguments[i].path || !PartBelow(path.View(), m_arguments[i].path.View()).empty()) return i;
  return 0;
}

bool CHistoryPaths::IsArgument(const CString& path) const {
  return std::any_of(m_arguments.begin(), m_arguments.end(),
                     [&](const CFileArgument& argument) { return argument.path == path; });
}

bool CHistoryPaths::HasFile(const CString& path) const {
  CFileStatus status;
  if (!FileLayer().Stat(path, status) || status.type == EFileType::folder) return false;
  return std::any_of(Logs().begin(), Logs().end(), [&](const CHistoryLog& log) {
    const bool isKnown = log.fault.IsEmpty() && log.status.inode;
    return isKnown ? log.status.device == status.device && log.status.inode == status.inode
                   : IsSameFile(log.path, path);
  });
}

}  // namespace vastra
