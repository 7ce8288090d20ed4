// CWrittenFiles: which logs a run has written, told by comparing the log directories at its start and its
// end. So a log that was written over counts as written, and one that the rotation took away again does not.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vastra/platform/array.h"

namespace vastra {

class CWrittenFiles {
 public:
  // Remembers what lies in directories now.
  explicit CWrittenFiles(const std::vector<CString>& directories) : m_directories(directories) {
    m_before = Look();
  }

  // Full paths, in byte order, of the logs that have appeared or changed since.
  std::vector<std::string> Changed() const;

 private:
  // What tells two states of a file apart.
  struct CState {
    std::uint64_t inode;
    std::uint64_t size;
    std::int64_t lastWrite;  // nanoseconds
    bool operator==(const CState&) const = default;
  };
  using CStates = std::map<std::string, CState>;  // by full path

  CStates Look() const;

  std::vector<CString> m_directories;
  CStates m_before;
};

}  // namespace vastra
