#include "vastra/platform/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace vastra {

CArray<CFileEntry> ListFiles(const CString& directory, const CString& extension) {
  CArray<CFileEntry> files;
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(directory.IsEmpty() ? "." : directory),
                                                    ::closedir);
  if (!listing) return files;
  while (const dirent* entry = ::readdir(listing.get())) {
    const CString name(entry->d_name);
    if (name.GetLength() < extension.GetLength()) continue;
    if (name.Right(extension.GetLength()).CompareNoCase(extension) != 0) continue;
    struct stat status = {};
    if (::fstatat(::dirfd(listing.get()), name, &status, 0) != 0 || !S_ISREG(status.st_mode)) continue;
    files.Add({name, std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec});
  }
  std::sort(files.begin(), files.end(),
            [](const CFileEntry& a, const CFileEntry& b) { return a.m_name < b.m_name; });
  return files;
}

bool FileExists(const CString& path) { return ::access(path, F_OK) == 0; }

int DeleteFile(const CString& path) { return ::unlink(path) == 0; }

bool CanEnter(const CString& directory) {
  struct stat status = {};
  return ::stat(directory, &status) == 0 && S_ISDIR(status.st_mode) && ::access(directory, X_OK) == 0;
}

int SetCurrentDirectory(const CString& directory) { return ::chdir(directory) == 0; }

CString JoinPath(const CString& directory, const CString& name) {
  return directory.IsEmpty() ? name : directory + "/" + name;
}

CString DirectoryOf(const CString& path) {
  const int slash = path.ReverseFind('/');
  if (slash < 0) return ".";
  return slash == 0 ? CString("/") : path.Left(slash);
}

void SyncDirectory(const CString& directory) {
  const int handle = ::open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle < 0) return;
  ::fsync(handle);
  ::close(handle);
}

}  // namespace vastra
