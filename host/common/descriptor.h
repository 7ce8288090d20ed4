// CDescriptor: an open file or socket that is closed with its object.
#pragma once

#include <unistd.h>

#include <utility>

namespace vastra {

class CDescriptor {
 public:
  // A negative one is none.
  explicit CDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
  CDescriptor(CDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  CDescriptor& operator=(CDescriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }
  CDescriptor(const CDescriptor&) = delete;
  CDescriptor& operator=(const CDescriptor&) = delete;
  ~CDescriptor() {
    if (m_descriptor >= 0) ::close(m_descriptor);
  }
  int Get() const { return m_descriptor; }

 private:
  int m_descriptor;
};

}  // namespace vastra
