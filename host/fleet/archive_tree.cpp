#include "host/fleet/archive_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>

#include "host/common/descriptor.h"
#include "host/fleet/file_version.h"

namespace vastra {
namespace {

constexpr const char* kIncoming = ".incoming";
constexpr mode_t kFolderMode = 0755, kFileMode = 0644;

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Negative with the reason in errno if there is no such folder, or it is a link.
int EnterFolder(int parent, const std::string& name) {
  return ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

int MakeFolder(int parent, const std::string& name) {
  if (::mkdirat(parent, name.c_str(), kFolderMode) != 0 && errno != EEXIST) return -1;
  return EnterFolder(parent, name);
}

std::string NameOf(std::uint64_t id) { return std::to_string(id); }

// The last folder of a path below dir, negative with the reason in errno, and the name in it.
struct CPlace {
  CDescriptor folder;
  std::string name;
};
CPlace Descend(int dir, const std::string& path, int (*enter)(int, const std::string&)) {
  CPlace place = {CDescriptor(::fcntl(dir, F_DUPFD_CLOEXEC, 0)), path};
  for (std::size_t slash = 0;
       place.folder.Get() >= 0 && (slash = place.name.find('/')) != std::string::npos;) {
    place.folder = CDescriptor(enter(place.folder.Get(), place.name.substr(0, slash)));
    place.name.erase(0, slash + 1);
  }
  return place;
}

}  // namespace

CArchiveTree::CArchiveTree(const std::string& dir) {
  std::filesystem::create_directories(dir);
  m_dir = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (m_dir < 0) Fail(dir);
  m_incoming = MakeFolder(m_dir, kIncoming);
  if (m_incoming < 0) Fail(dir);
  if (::flock(m_incoming, LOCK_EX | LOCK_NB) != 0) Fail(dir + " is in use by another archive");
}

CArchiveTree::~CArchiveTree() {
  ::close(m_incoming);
  ::close(m_dir);
}

void CArchiveTree::Write(std::uint64_t id, std::uint64_t offset, std::string_view bytes) {
  const CDescriptor file(
      ::openat(m_incoming, NameOf(id).c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kFileMode));
  if (file.Get() < 0) Fail(NameOf(id));
  while (!bytes.empty()) {
    const ssize_t written = ::pwrite(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) Fail(NameOf(id));
    bytes.remove_prefix(static_cast<std::size_t>(written));
    offset += static_cast<std::uint64_t>(written);
  }
}

CVersion CArchiveTree::Digest(std::uint64_t id) const {
  const CDescriptor file(::openat(m_incoming, NameOf(id).c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  const std::optional<CVersion> version = VersionOfFile(file.Get());
  if (!version) Fail(NameOf(id));
  return *version;
}

bool CArchiveTree::Has(std::uint64_t id) const {
  return ::faccessat(m_incoming, NameOf(id).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
}

void CArchiveTree::Drop(std::uint64_t id) noexcept { ::unlinkat(m_incoming, NameOf(id).c_str(), 0); }

std::vector<std::uint64_t> CArchiveTree::Incoming() const {
  std::vector<std::uint64_t> ids;
  const int folder = ::openat(m_incoming, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> list(::fdopendir(folder), ::closedir);
  if (!list) Fail(kIncoming);
  while (const dirent* const entry = ::readdir(list.get())) {
    char* end = nullptr;
    const std::uint64_t id = std::strtoull(entry->d_name, &end, 10);
    if (*end == 0 && id > 0) ids.push_back(id);
  }
  return ids;
}

void CArchiveTree::Place(std::uint64_t id, const std::string& path) {
  const CPlace place = Descend(m_dir, path, MakeFolder);
  if (place.folder.Get() < 0 ||
      ::renameat(m_incoming, NameOf(id).c_str(), place.folder.Get(), place.name.c_str()) != 0)
    Fail(path);
}

bool CArchiveTree::HasFile(const std::string& path) const {
  const CPlace place = Descend(m_dir, path, EnterFolder);
  struct stat status = {};
  if (place.folder.Get() >= 0 &&
      ::fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
    return S_ISREG(status.st_mode);
  if (errno != ENOENT && !IsOfPath({errno, std::generic_category()})) Fail(path);
  return false;
}

std::optional<CVersion> CArchiveTree::VersionOf(const std::string& path) {
  const CPlace place = Descend(m_dir, path, EnterFolder);
  if (place.folder.Get() < 0) return std::nullopt;
  const CDescriptor opened(
      ::openat(place.folder.Get(), place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status = {};
  if (opened.Get() < 0 || ::fstat(opened.Get(), &status) != 0) return std::nullopt;
  const auto found = m_read.find(path);
  if (found != m_read.end() && found->second.mark == MarkOf(status)) return found->second.version;
  const std::optional<CVersion> version = VersionOfFile(opened.Get());
  if (m_read.size() >= kMostRead) m_read.clear();
  if (version) m_read[path] = {MarkOf(status), *version};
  return version;
}

void CArchiveTree::Sync() const {
  if (::syncfs(m_dir) != 0) Fail("sync of the archive");
}

bool CArchiveTree::IsOfPath(const std::error_code& fault) {
  constexpr int kOfPath[] = {ENOTDIR, EISDIR, ELOOP, ENAMETOOLONG, ENOTEMPTY, EEXIST,
                             EILSEQ,  EINVAL, EXDEV, EACCES,       EPERM,     EBUSY};
  return std::find(std::begin(kOfPath), std::end(kOfPath), fault.value()) != std::end(kOfPath);
}

}  // namespace vastra
