// CFolderWatch: reports what comes into folders while it comes, for a walk through a million files takes
// minutes. What the system does not report (on a network drive, of more folders than it watches, of too much
// at once) the walk finds.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "host/common/descriptor.h"

namespace vastra {

class CFolderWatch {
 public:
  struct CNews {
    std::string key;  // of what came: the key of its folder, "/" and its name
    bool isFolder;
  };

  CFolderWatch();

  // From now on also what comes into the folder at path.
  void Add(const std::string& path, const std::string& key);
  // What has come, at most some thousand; the rest with the next call. Files that were written and closed are
  // reported, too.
  std::vector<CNews> Take();

 private:
  static constexpr std::size_t kMost = 10000;  // the system takes about 1 KB for each

  CDescriptor m_queue;
  std::unordered_map<int, std::string> m_keys;  // of folders, by the system's numbers
};

}  // namespace vastra
