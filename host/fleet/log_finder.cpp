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
      Enter(m_levels, AT_FDCWD, folder.path, folder.name);
    } else {
      Read(m_levels, found);
    }
  }
  return false;
}

void CLogFinder::StepNew(std::size_t entries, const CFound& found) {
  for (const CFolderWatch::CNews& news : m_watch.Take()) {
    if (news.key[news.key.rfind('/') + 1] == '.') continue;
    if (!news.isFolder)
      Look(AT_FDCWD, PathOf(news.key), news.key, m_newLevels, found);
    else if (m_newFolders.size() < kMostNew)
      m_newFolders.push_back(news.key);
  }
  for (; entries > 0 && !(m_newLevels.empty() && m_newFolders.empty()); --entries) {
    if (!m_newLevels.empty()) {
      Read(m_newLevels, found);
    } else {
      Look(AT_FDCWD, PathOf(m_newFolders.front()), m_newFolders.front(), m_newLevels, found);
      m_newFolders.pop_front();
    }
  }
}

// The next entry of the last folder.
void CLogFinder::Read(CLevels& levels, const CFound& found) {
  DIR* const list = levels.back().list.get();
  const dirent* const entry = ::readdir(list);
  if (entry == nullptr)
    levels.pop_back();
  else if (const std::string name = entry->d_name; name.starts_with('.'))
    Restore(::dirfd(list), name);
  else
    Look(::dirfd(list), name, levels.back().key + "/" + name, levels, found);
}

void CLogFinder::Enter(CLevels& levels, int parent, const std::string& name, const std::string& key) {
  const int links = levels.empty() ? 0 : O_NOFOLLOW;
  const int folder = ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links);
  DIR* const list = folder < 0 ? nullptr : ::fdopendir(folder);
  if (list == nullptr) {
    const int fault = errno;
    if (folder >= 0) ::close(folder);
    if (fault != ENOENT || levels.empty()) m_tell(PathOf(key) + ": " + std::strerror(fault));
    return;
  }
  levels.push_back({{list, ::closedir}, key});
  m_watch.Add(PathOf(key), key);
}

// name: the name in folder, or with AT_FDCWD the path.
void CLogFinder::Look(int folder, const std::string& name, const std::string& key, CLevels& levels,
                      const CFound& found) {
  struct stat status = {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;  // gone since
  if (S_ISDIR(status.st_mode) && levels.size() < kDeepest) Enter(levels, folder, name, key);
  if (!S_ISREG(status.st_mode) || !IsLog(name)) return;
  m_disks[key.substr(0, key.find('/'))] = status.st_dev;
  if (IsFleetKey(key))
    found(key, status);
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
