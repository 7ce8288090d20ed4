// CFeedFolders: how much room the folders of the logs have. A thread of its own asks every 5 seconds, since a
// folder on a network can keep the caller waiting for ever.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "vastra/platform/string.h"

namespace vastra {

class CFeedFolders {
 public:
  CFeedFolders();
  ~CFeedFolders();  // does not wait for a folder
  CFeedFolders(const CFeedFolders&) = delete;
  CFeedFolders& operator=(const CFeedFolders&) = delete;

  // The folders to ask for from now on.
  void Watch(std::vector<CString> paths);
  // The bytes that the logger may still write there; none if that is not known or the folder does not answer.
  std::optional<std::uint64_t> FreeBytes(const CString& path) const;

 private:
  struct CShared;
  static void Main(const std::shared_ptr<CShared>& shared);

  const std::shared_ptr<CShared> m_pShared;  // with the thread
};

}  // namespace vastra
