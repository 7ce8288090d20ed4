#include "host/fleet/log_finder.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/fleet/fleet_names.h"

namespace vastra {
namespace {

constexpr std::size_t kDeepest = 32;  // folders in one another

bool EndsIn(std::string_view name, std::string_view extension) {
  return name.size() > extension.size() &&
         ::strncasecmp(name.data() + name.size() - extension.size(), extension.data(), extension.size()) == 0;
}

}  // namespace

bool CLogFinder::IsLog(std::string_view name) const {
  return !name.starts_with('.') &&
         (EndsIn(name, ".rph") || EndsIn(name, ".rpd") || (m_isCsv && EndsIn(name, ".csv")));
}

bool CLogFinder::Step(std::size_t entries, const CFound& found) {
  for (std::size_t i = 0; i < entries; ++i) {
    if (m_levels.empty()) {
      if (m_next == m_folders.size()) {
        m_next = 0;
        return true;
      }
      const CShipFolder& folder = m_folders[m_next++];
      Enter(AT_FDCWD, folder.path, folder.name);
      continue;
    }
    const dirent* const entry = ::readdir(m_levels.back().list.get());
    if (entry == nullptr)
      m_levels.pop_back();
    else
      Look(entry->d_name, found);
  }
  return false;
}

void CLogFinder::Enter(int parent, const std::string& name, const std::string& key) {
  const int links = parent == AT_FDCWD ? 0 : O_NOFOLLOW;
  const int folder = ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links);
  DIR* const list = folder < 0 ? nullptr : ::fdopendir(folder);
  if (list == nullptr) {
    const int fault = errno;
    if (folder >= 0) ::close(folder);
    if (fault != ENOENT || m_levels.empty()) m_tell(PathOf(key) + ": " + std::strerror(fault));
    return;
  }
  m_levels.push_back({{list, ::closedir}, key});
}

void CLogFinder::Look(const std::string& name, const CFound& found) {
  const int folder = ::dirfd(m_levels.back().list.get());
  if (name.starts_with('.')) {
    Restore(folder, name);
    return;
  }
  struct stat status = {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;  // gone since
  const std::string key = m_levels.back().key + "/" + name;
  if (S_ISDIR(status.st_mode) && m_levels.size() < kDeepest) Enter(folder, name, key);
  if (!S_ISREG(status.st_mode) || !IsLog(name)) return;
  m_disks[key.substr(0, key.find('/'))] = status.st_dev;
  if (IsFleetKey(key))
    found(key, MarkOf(status));
  else
    m_tell(PathOf(key) + ": its name cannot be in an archive: it is too long or has control characters");
}

void CLogFinder::Restore(int folder, const std::string& aside) {
  constexpr std::string_view kEnd = ".shipped";
  if (!aside.ends_with(kEnd) || aside.size() <= kEnd.size() + 1) return;
  const std::string name = aside.substr(1, aside.size() - 1 - kEnd.size());
  if (IsLog(name)) ::renameat2(folder, aside.c_str(), folder, name.c_str(), RENAME_NOREPLACE);
}

const CShipFolder* CLogFinder::FolderOf(std::string_view key) const {
  const std::string_view name = key.substr(0, key.find('/'));
  const auto found = std::find_if(m_folders.begin(), m_folders.end(),
                                  [&](const CShipFolder& one) { return one.name == name; });
  return found == m_folders.end() ? nullptr : &*found;
}

std::string CLogFinder::PathOf(std::string_view key) const {
  const CShipFolder* const folder = FolderOf(key);
  return folder == nullptr ? "" : folder->path + std::string(key.substr(folder->name.size()));
}

std::string CLogFinder::KeyOf(std::string_view path) const {
  namespace fs = std::filesystem;
  std::error_code fault;
  const std::string real = fs::canonical(path, fault).string();
  for (const CShipFolder& folder : m_folders) {
    const std::string base = fs::canonical(folder.path, fault).string() + "/";
    std::string key = folder.name + "/" + real.substr(std::min(base.size(), real.size()));
    if (real.starts_with(base) && IsFleetKey(key)) return key;
  }
  return "";
}

bool CLogFinder::HasFolder(std::string_view key) const {
  const CShipFolder* const folder = FolderOf(key);
  struct stat status = {};
  if (folder == nullptr || ::access(folder->path.c_str(), R_OK | X_OK) != 0 ||
      ::stat(folder->path.c_str(), &status) != 0)
    return false;
  const auto disk = m_disks.find(folder->name);
  return disk == m_disks.end() || disk->second == status.st_dev;
}

}  // namespace vastra
