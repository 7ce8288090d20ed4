// CDescriptor: an open file that is closed with it. VersionOfFile: the version of its content.
#pragma once

#include <unistd.h>

#include <optional>
#include <utility>

#include "host/fleet/sha256.h"

namespace vastra {

class CDescriptor {
 public:
  explicit CDescriptor(int file = -1) : m_file(file) {}
  CDescriptor(CDescriptor&& other) noexcept : m_file(std::exchange(other.m_file, -1)) {}
  CDescriptor& operator=(CDescriptor&& other) noexcept {
    std::swap(m_file, other.m_file);
    return *this;
  }
  ~CDescriptor() {
    if (m_file >= 0) ::close(m_file);
  }
  int Get() const { return m_file; }

 private:
  int m_file;
};

// Reads file from its beginning to its end. Empty with the reason in errno if that fails.
std::optional<CVersion> VersionOfFile(int file);

}  // namespace vastra
