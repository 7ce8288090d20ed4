// Files for tests: a temporary directory, whole files read and written, and a disk that is full after n
// bytes.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "vastra/platform/string.h"

namespace vastra {

// A new directory. The destructor removes it with its files.
class CTempDir {
 public:
  CTempDir() {
    std::string path = (std::filesystem::temp_directory_path() / "vastra-XXXXXX").string();
    m_path = ::mkdtemp(path.data());
  }
  CTempDir(const CTempDir&) = delete;
  CTempDir& operator=(const CTempDir&) = delete;
  ~CTempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path.Std(), ignored);
  }

  const CString& Path() const { return m_path; }
  CString operator/(const char* name) const { return m_path + "/" + name; }

 private:
  CString m_path;
};

// All bytes of a file; an empty string if it cannot be read.
inline std::string ReadBytes(const CString& path) {
  std::ifstream file(path.Std(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const CString& path, const std::string& bytes) {
  std::ofstream(path.Std(), std::ios::binary) << bytes;
}

// While the object exists, no file of this process can grow beyond bytes: a write fails as on a full disk.
class CFileSizeLimit {
 public:
  explicit CFileSizeLimit(std::size_t bytes) {
    m_handler = std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(RLIMIT_FSIZE, &m_before);
    const rlimit now = {bytes, m_before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &now);
  }
  CFileSizeLimit(const CFileSizeLimit&) = delete;
  CFileSizeLimit& operator=(const CFileSizeLimit&) = delete;
  ~CFileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &m_before);
    std::signal(SIGXFSZ, m_handler);
  }

 private:
  rlimit m_before = {};
  void (*m_handler)(int) = nullptr;
};

}  // namespace vastra
