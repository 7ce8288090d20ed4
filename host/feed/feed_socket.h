// The listening socket of the feed.
#pragma once

#include <sys/types.h>

#include "host/common/descriptor.h"
#include "vastra/platform/string.h"

namespace vastra {

class CFeedSocket {
 public:
  explicit CFeedSocket(const CString& path) : m_path(path) {}
  ~CFeedSocket();  // removes the socket, unless another process has put its own in its place
  CFeedSocket(const CFeedSocket&) = delete;
  CFeedSocket& operator=(const CFeedSocket&) = delete;

  // Listens at the path, for the owner and the group of the process. A socket at the path that nobody listens
  // on is replaced. Empty, or why the socket cannot be made.
  CString Open();
  int Get() const { return m_socket.Get(); }

 private:
  CString Bind();

  const CString m_path;
  CDescriptor m_socket;
  bool m_isMade = false;
  dev_t m_device = 0;  // of the socket's file
  ino_t m_inode = 0;
};

}  // namespace vastra
