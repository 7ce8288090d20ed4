#include "host/cli/written_files.h"

#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

constexpr const char* kExtensions[] = {".rph", ".rpd", ".csv"};

std::string Normal(const CString& directory) {
  std::error_code failed;
  const std::filesystem::path path = std::filesystem::absolute(directory.Std(), failed).lexically_normal();
  return (path.has_filename() ? path : path.parent_path()).string();
}

}  // namespace

CWrittenFiles::CStates CWrittenFiles::Look() const {
  CStates states;
  std::set<std::pair<dev_t, ino_t>> seen;  // two outputs may share a directory, by whatever names
  for (const CString& directory : m_directories) {
    struct stat status = {};
    if (::stat(directory, &status) != 0 || !seen.emplace(status.st_dev, status.st_ino).second) continue;
    for (const char* extension : kExtensions)
      for (const CFileEntry& entry : ListFiles(directory, extension)) {
        const CString path = JoinPath(CString(Normal(directory)), entry.m_name);
        if (::stat(path, &status) == 0)
          states[path.Std()] = {status.st_ino, static_cast<std::uint64_t>(status.st_size), entry.m_lastWrite};
      }
  }
  return states;
}

std::vector<std::string> CWrittenFiles::Changed() const {
  std::vector<std::string> changed;
  for (const auto& [path, state] : Look()) {
    const auto before = m_before.find(path);
    if (before == m_before.end() || !(before->second == state)) changed.push_back(path);
  }
  return changed;
}

}  // namespace vastra
