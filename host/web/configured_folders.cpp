#include "host/web/configured_folders.h"

#include <algorithm>
#include <filesystem>

#include "host/common/configuration_file.h"
#include "host/common/log_targets.h"

namespace vastra {

std::vector<std::string> ConfiguredFolders(const CLoggerFolders& places, const CString& name) {
  std::vector<std::string> folders;
  CConfiguration configuration;
  const CString path = places.etc + "/vastra/" + name;
  std::error_code error;
  const bool isJson = std::filesystem::exists((path + ".json").Std(), error);
  if (places.etc.IsEmpty() || !IsLoggerName(name)) return folders;
  const CString fault =
      LoadConfiguration(path + (isJson ? ".json" : ".vst"), configuration, places.state + "/" + name);
  if (!fault.IsEmpty()) return folders;
  for (const CLogTarget& target : FindLogTargets(configuration)) {
    const std::string& folder = target.directory.Std();
    if (folder.starts_with('/') && std::ranges::find(folders, folder) == folders.end())
      folders.push_back(folder);
  }
  return folders;
}

}  // namespace vastra
