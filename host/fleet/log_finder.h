// CLogFinder: walks through folders in small steps, without the memory that their lists would need, and
// reports what comes into them meanwhile.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/fleet/folder_watch.h"

namespace vastra {

// A folder whose logs are shipped: its name is the beginning of the keys of its files.
struct CShipFolder {
  std::string name, path;
};

class CLogFinder {
 public:
  using CFound = std::function<void(const std::string& key, const struct stat& status)>;
  using CTell = std::function<void(const std::string&)>;

  // isCsv: logs as text, too. tell gets a line about each folder that cannot be read.
  CLogFinder(std::vector<CShipFolder> folders, bool isCsv, CTell tell)
      : m_folders(std::move(folders)), m_isCsv(isCsv), m_tell(std::move(tell)) {}

  // Looks at so many entries more. Returns whether the walk has come to its end; the next call begins
  // another.
  bool Step(std::size_t entries, const CFound& found);
  // The same for what came into folders that a walk has entered, as far as the system reports it.
  void StepNew(std::size_t entries, const CFound& found);
  bool IsLog(std::string_view name) const;
  // The name of a file that is being removed. A kill can leave it: the walk gives such a file its name again.
  static std::string AsideName(const std::string& name) { return "." + name + ".shipped"; }
  // The path of a key; empty for one of no folder.
  std::string PathOf(std::string_view key) const;
  // The key of a file that is really below one of the folders, whatever links its path has; empty for another
  // one.
  std::string KeyOf(std::string_view path) const;
  // Whether the folder of a key can be read and is on the disk where logs were found, so that a file that is
  // not there is really gone.
  bool HasFolder(std::string_view key) const;

 private:
  struct CLevel {
    std::unique_ptr<DIR, int (*)(DIR*)> list;
    std::string key;
  };
  using CLevels = std::vector<CLevel>;

  void Enter(CLevels& levels, int parent, const std::string& name, const std::string& key);
  void Read(CLevels& levels, const CFound& found);
  void Look(int folder, const std::string& name, const std::string& key, CLevels& levels,
            const CFound& found);
  void Restore(int folder, const std::string& aside);
  const CShipFolder* FolderOf(std::string_view key) const;

  const std::vector<CShipFolder> m_folders;
  std::map<std::string, dev_t, std::less<>> m_disks;  // by the names of folders
  const bool m_isCsv;
  const CTell m_tell;
  CLevels m_levels;
  std::size_t m_next = 0;  // folder

  static constexpr std::size_t kMostNew = 10000;
  CFolderWatch m_watch;
  std::deque<std::string> m_newFolders;  // keys
  CLevels m_newLevels;                   // of one of them
};

}  // namespace vastra
