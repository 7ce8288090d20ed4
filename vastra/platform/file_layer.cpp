#include "vastra/platform/file_layer.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

namespace vastra {
namespace {

CFileLayer* g_fileLayer = nullptr;

// Repeats a call that a signal has interrupted.
template <class TCall>
auto Uninterrupted(TCall call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

CFileStatus StatusOf(const struct stat& from) {
  const EFileType type = S_ISREG(from.st_mode)   ? EFileType::regular
                         : S_ISDIR(from.st_mode) ? EFileType::folder
                                                 : EFileType::other;
  return {type, static_cast<std::uint64_t>(from.st_size),
          std::int64_t{from.st_mtim.tv_sec} * 1'000'000'000 + from.st_mtim.tv_nsec, from.st_dev, from.st_ino};
}

// The three ways of renaming without replacing, best first. Each is for file systems and kernels without
// those before it.
int MoveExclusively(const char* from, const char* to) {
  return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0;
}

int MoveByLink(const char* from, const char* to) {
  if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) != 0) return 0;
  if (::unlink(from) == 0) return 1;
  const int reason = errno;
  ::unlink(to);
  errno = reason;
  return 0;
}

int MoveIfFree(const char* from, const char* to) {
  struct stat found = {};
  if (::lstat(to, &found) == 0) return errno = EEXIST, 0;
  return errno == ENOENT && ::rename(from, to) == 0;
}

// The errors of a file system or kernel that lacks a way of renaming.
bool IsMissing(int error) {
  constexpr int kMissing[] = {EINVAL, ENOSYS, EPERM, EOPNOTSUPP, EMLINK};
  return std::find(std::begin(kMissing), std::end(kMissing), error) != std::end(kMissing);
}

bool IsDots(std::string_view name) { return name == "." || name == ".."; }

}  // namespace

bool EndsIn(std::string_view name, std::string_view ending) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return name.size() >= ending.size() &&
         std::equal(ending.begin(), ending.end(), name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

int CFileLayer::Open(const CString& path, int flags, mode_t mode) {
  return Uninterrupted([&] { return ::open(path, flags | O_CLOEXEC, mode); });
}

ssize_t CFileLayer::Read(int file, void* bytes, std::size_t count) {
  return Uninterrupted([&] { return ::read(file, bytes, count); });
}

ssize_t CFileLayer::ReadAt(int file, void* bytes, std::size_t count, std::uint64_t place) {
  return Uninterrupted([&] { return ::pread(file, bytes, count, static_cast<off_t>(place)); });
}

ssize_t CFileLayer::Write(int file, const iovec* parts, int count) {
  return Uninterrupted([&] { return ::writev(file, parts, count); });
}

int CFileLayer::Sync(int file) {
  return Uninterrupted([&] { return ::fsync(file); }) == 0;
}

int CFileLayer::Truncate(int file, std::uint64_t length) {
  const auto end = static_cast<off_t>(length);
  return Uninterrupted([&] { return ::ftruncate(file, end); }) == 0 && ::lseek(file, end, SEEK_SET) == end;
}

// The descriptor is free even after EINTR, so that a second call could close another thread's file.
int CFileLayer::Close(int file) { return ::close(file) == 0 || errno == EINTR; }

int CFileLayer::Rename(const CString& from, const CString& to, bool mayReplace) {
  if (mayReplace) return ::rename(from, to) == 0;
  for (const auto move : {MoveExclusively, MoveByLink, MoveIfFree}) {
    if (move(from, to)) return 1;
    if (!IsMissing(errno)) return 0;
  }
  return 0;
}

int CFileLayer::Remove(const CString& path) { return ::unlink(path) == 0; }

int CFileLayer::RemoveEmptyFolder(const CString& path) { return ::rmdir(path) == 0; }

int CFileLayer::SyncFolder(const CString& path) {
  const int folder = CFileLayer::Open(path, O_RDONLY | O_DIRECTORY, 0);
  if (folder < 0) return 0;
  const int synced = CFileLayer::Sync(folder) || errno == EINVAL || errno == ENOTSUP;
  const int reason = errno;
  ::close(folder);
  errno = reason;
  return synced;
}

int CFileLayer::ListWanted(const CString& folder, const CWanted& wanted, std::vector<CFolderEntry>& entries) {
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder), ::closedir);
  if (!listing && errno == ENOMEM) throw std::bad_alloc();  // not an empty folder
  if (!listing) return 0;
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(listing.get());
    if (!entry) return errno == 0;
    const std::string_view name = entry->d_name;
    if (IsDots(name) || !wanted(name, entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN)) continue;
    struct stat status = {};
    const int file = ::dirfd(listing.get());
    if (::fstatat(file, entry->d_name, &status, 0) == 0 ||
        ::fstatat(file, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
      entries.push_back({CString(name), StatusOf(status)});
  }
}

int CFileLayer::List(const CString& folder, const CString& ending, std::vector<CFolderEntry>& entries) {
  return ListWanted(
      folder, [&](std::string_view name, bool) { return EndsIn(name, ending.View()); }, entries);
}

int CFileLayer::Stat(const CString& path, CFileStatus& status) {
  struct stat found = {};
  if (::stat(path, &found) != 0) return 0;
  status = StatusOf(found);
  return 1;
}

int CFileLayer::StatOpen(int file, CFileStatus& status) {
  struct stat found = {};
  if (::fstat(file, &found) != 0) return 0;
  status = StatusOf(found);
  return 1;
}

EFileLock CFileLayer::Lock(int file) {
  if (Uninterrupted([&] { return ::flock(file, LOCK_EX | LOCK_NB); }) == 0) return EFileLock::taken;
  return errno == EWOULDBLOCK ? EFileLock::held : EFileLock::unsupported;
}

int CFileLayer::FreeBytes(const CString& path, std::uint64_t& bytes) {
  struct statvfs found = {};
  if (Uninterrupted([&] { return ::statvfs(path, &found); }) != 0) return 0;
  bytes = static_cast<std::uint64_t>(found.f_bavail) * found.f_frsize;
  return 1;
}

CFileLayer* SetFileLayer(CFileLayer* layer) { return std::exchange(g_fileLayer, layer); }

CFileLayer& FileLayer() {
  static CFileLayer system;
  return g_fileLayer ? *g_fileLayer : system;
}

}  // namespace vastra
