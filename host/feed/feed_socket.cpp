#include "host/feed/feed_socket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

namespace vastra {
namespace {

constexpr int kBacklog = 128;
constexpr int kLockTries = 100;
constexpr useconds_t kLockPause = 10'000;
const char* const kTemporary = ".new";  // after the path, until the socket listens

CString Reason(int error) { return CString(std::generic_category().message(error)); }

bool SetAddress(sockaddr_un& address, const std::string& path) {
  address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path || path.find('\0') != path.npos) return false;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return true;
}

// POSIX has the addresses of all families as one type.
const sockaddr* AsAddress(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

CDescriptor NewSocket() {
  return CDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

CString UserOf(int socket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid <= 0)
    return "another process";
  return CString("process " + std::to_string(peer.pid));
}

// Why the path cannot be used; empty if there is nothing, or a socket that nobody listens on.
CString FindUse(const std::string& path, const sockaddr_un& address) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) != 0) return errno == ENOENT ? CString() : Reason(errno);
  if (!S_ISSOCK(status.st_mode)) return "something else than a socket is there";
  const CDescriptor trial = NewSocket();
  if (trial.Get() < 0) return Reason(errno);
  if (::connect(trial.Get(), AsAddress(address), sizeof address) == 0)
    return UserOf(trial.Get()) + " uses it";
  if (errno == EAGAIN) return "another process uses it";
  return errno == ECONNREFUSED ? CString() : Reason(errno);
}

// Two starts at the same time take their turns: the folder is locked.
CString LockFolder(const std::string& path, CDescriptor& folder) {
  const std::size_t slash = path.rfind('/');
  const std::string name = slash == path.npos ? "." : path.substr(0, slash + 1);
  folder = CDescriptor(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Get() < 0) return Reason(errno);
  for (int i = 0; ::flock(folder.Get(), LOCK_EX | LOCK_NB) != 0; ++i) {
    if (errno != EWOULDBLOCK || i == kLockTries) return "the folder cannot be locked: " + Reason(errno);
    ::usleep(kLockPause);
  }
  return {};
}

}  // namespace

CFeedSocket::~CFeedSocket() {
  struct stat status = {};
  if (m_isMade && ::lstat(m_path, &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode)
    ::unlink(m_path);
}

CString CFeedSocket::Open() {
  const CString fault = Bind();
  return fault.IsEmpty() ? CString() : m_path + ": the socket of the feed cannot be made: " + fault;
}

// The socket gets its name when it has its mode and listens. Nobody can connect before.
CString CFeedSocket::Bind() {
  sockaddr_un address, temporary;
  const std::string path = m_path.Std(), made = path + kTemporary;
  if (path.empty() || !SetAddress(address, path) || !SetAddress(temporary, made))
    return "its path has more than " +
           CString(std::to_string(sizeof address.sun_path - 1 - std::strlen(kTemporary))) + " bytes";
  CDescriptor folder;
  if (CString fault = LockFolder(path, folder); !fault.IsEmpty()) return fault;
  if (CString fault = FindUse(path, address); !fault.IsEmpty()) return fault;
  m_socket = NewSocket();
  struct stat status = {};
  if (m_socket.Get() < 0) return Reason(errno);
  if (const CString fault = FindUse(made, temporary); !fault.IsEmpty()) return CString(made) + ": " + fault;
  ::unlink(made.c_str());
  if (::bind(m_socket.Get(), AsAddress(temporary), sizeof temporary) != 0) return Reason(errno);
  const bool isMade = ::chmod(made.c_str(), S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP) == 0 &&
                      ::listen(m_socket.Get(), kBacklog) == 0 && ::lstat(made.c_str(), &status) == 0 &&
                      ::rename(made.c_str(), path.c_str()) == 0;
  const int error = errno;
  if (!isMade) return ::unlink(made.c_str()), Reason(error);
  m_isMade = true;
  m_device = status.st_dev;
  m_inode = status.st_ino;
  return {};
}

}  // namespace vastra
