#include "vastra/platform/file_system.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "vastra/platform/file_layer.h"

namespace vastra {

CArray<CFileEntry> ListFiles(const CString& directory, const CString& extension) {
  std::vector<CFolderEntry> entries;
  FileLayer().List(directory.IsEmpty() ? "." : directory, extension, entries);
  CArray<CFileEntry> files;
  for (const CFolderEntry& entry : entries)
    if (entry.status.type == EFileType::regular) files.Add({entry.name, entry.status.lastWrite});
  std::sort(files.begin(), files.end(),
            [](const CFileEntry& a, const CFileEntry& b) { return a.m_name < b.m_name; });
  return files;
}

bool FileExists(const CString& path) {
  CFileStatus status;
  return FileLayer().Stat(path, status);
}

std::uint64_t FileSize(const CString& path) {
  CFileStatus status;
  return FileLayer().Stat(path, status) && status.type == EFileType::regular ? status.size : 0;
}

int DeleteFile(const CString& path) { return FileLayer().Remove(path); }

bool CanEnter(const CString& directory) {
  CFileStatus status;
  return FileLayer().Stat(directory, status) && status.type == EFileType::folder &&
         ::access(directory, X_OK) == 0;
}

int SetCurrentDirectory(const CString& directory) { return ::chdir(directory) == 0; }

CString JoinPath(const CString& directory, const CString& name) {
  return directory.IsEmpty() ? name : directory + "/" + name;
}

CString AbsolutePath(const CString& path) {
  std::error_code ignored;
  return CString(std::filesystem::absolute(path.Std(), ignored).string());
}

CString DirectoryOf(const CString& path) {
  const int slash = path.ReverseFind('/');
  if (slash < 0) return ".";
  return slash == 0 ? CString("/") : path.Left(slash);
}

int SyncDirectory(const CString& directory) { return FileLayer().SyncFolder(directory); }

}  // namespace vastra
