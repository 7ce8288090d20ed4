#include "host/run/written_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace vastra {

std::vector<std::string> CWrittenFiles::Existing() const {
  std::vector<std::string> existing;
  std::set<std::pair<dev_t, ino_t>> seen;
  struct stat status = {};
  for (const std::string& path : m_paths)
    if (::stat(path.c_str(), &status) == 0 && seen.emplace(status.st_dev, status.st_ino).second)
      existing.push_back(path);
  return existing;
}

// A run of months rotates many logs away: their paths are not kept for ever.
void CWrittenFiles::Add(const CString& path) {
  m_paths.insert(std::filesystem::path(path.Std()).lexically_normal().string());
  if (m_paths.size() <= m_limit) return;
  std::erase_if(m_paths, [](const std::string& old) { return ::access(old.c_str(), F_OK) != 0; });
  m_limit = std::max(m_limit, 2 * m_paths.size());
}

}  // namespace vastra
