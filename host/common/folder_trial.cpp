#include "host/common/folder_trial.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>

#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr mode_t kMode = 0600;

bool IsFull(int error) { return error == ENOSPC || error == EDQUOT; }

int MakeFolder(const CString& folder) {
  std::error_code failed;
  std::filesystem::create_directories(folder.Std(), failed);
  return failed.value();
}

// 0, or why a file cannot be made and removed. The file has one name, so that the next trial removes one that
// a kill has left; another process that tries the folder at the same time can make or remove it, too.
int TryFile(const CString& path) {
  FileLayer().Remove(path);
  const int file = FileLayer().Open(path, O_CREAT | O_EXCL | O_WRONLY, kMode);
  if (file < 0) return errno == EEXIST ? 0 : errno;
  FileLayer().Close(file);
  return FileLayer().Remove(path) || errno == ENOENT ? 0 : errno;
}

}  // namespace

CFolderTrial TryFolder(const CString& folder, bool makes) {
  CFileStatus status;
  if (makes && !FileLayer().Stat(folder, status))
    if (const int error = MakeFolder(folder)) return {error, IsFull(error)};
  const int error = TryFile(JoinPath(folder, ".vastra-trial"));
  return {error, IsFull(error)};
}

}  // namespace vastra
