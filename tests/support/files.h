// Real files for tests: a directory of one test's own, whole files in and out, and a disk that is full after
// n bytes.
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

// A fresh directory, taken away with all that is in it.
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

// All bytes of a file; none if it cannot be read.
inline std::string ReadBytes(const CString& path) {
  std::ifstream file(path.Std(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const CString& path, const std::string& bytes) {
  std::ofstream(path.Std(), std::ios::binary) << bytes;
}

// As long as it lives, no file of this process grows beyond bytes: the write past it fails as on a full disk.
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
