#include "vastra/platform/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <limits>
#include <system_error>

#include "vastra/platform/file_system.h"

namespace vastra {

CString CFileException::Text() const { return CString(std::generic_category().message(m_error)); }

CFile::CFile(const CString& path, UINT mode) {
  if (!Open(path, mode)) Fail();
}

CFile::~CFile() {
  if (IsOpen()) ::close(m_handle);
}

int CFile::Open(const CString& path, UINT mode) {
  if (IsOpen()) ::close(m_handle);
  int flags = O_CLOEXEC | (mode & modeWrite ? O_WRONLY : O_RDONLY);
  if (mode & modeCreate) flags |= O_CREAT | (mode & modeNew ? O_EXCL : O_TRUNC);
  m_path = path;
  m_handle = ::open(path, flags, 0666);
  return IsOpen();
}

std::size_t CFile::Read(void* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t part = ::read(m_handle, static_cast<char*>(bytes) + done, count - done);
    if (part < 0 && errno == EINTR) continue;
    if (part < 0) Fail();
    if (part == 0) break;
    done += static_cast<std::size_t>(part);
  }
  return done;
}

void CFile::Write(const void* bytes, std::size_t count) {
  iovec part = {const_cast<void*>(bytes), count};
  WriteParts(&part, 1);
}

void CFile::WriteParts(iovec* parts, std::size_t count) {
  iovec* const end = parts + count;
  for (;;) {
    while (parts != end && parts->iov_len == 0) ++parts;
    if (parts == end) return;
    const auto batch =
        static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(end - parts), IOV_MAX));
    const ssize_t result = ::writev(m_handle, parts, batch);
    if (result < 0 && errno == EINTR) continue;
    if (result < 0) Fail();
    auto done = static_cast<std::size_t>(result);
    while (parts != end && done >= parts->iov_len) done -= (parts++)->iov_len;
    if (parts == end) return;
    parts->iov_base = static_cast<char*>(parts->iov_base) + done;
    parts->iov_len -= done;
  }
}

std::uint64_t CFile::GetLength() const {
  struct stat status = {};
  if (::fstat(m_handle, &status) != 0) Fail();
  return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size)
                                 : std::numeric_limits<std::uint64_t>::max();
}

void CFile::Sync() {
  if (::fsync(m_handle) != 0) Fail();
}

void CFile::Close() {
  if (!IsOpen()) return;
  const int result = ::close(m_handle);
  m_handle = -1;
  if (result != 0) Fail();
}

void CFile::Fail() const { throw CFileException(m_path, errno); }

std::size_t CMemFile::Read(void* bytes, std::size_t count) {
  const std::size_t part = std::min(count, m_bytes.size() - m_place);
  if (part) std::memcpy(bytes, m_bytes.data() + m_place, part);
  m_place += part;
  return part;
}

void CMemFile::Write(const void* bytes, std::size_t count) {
  m_bytes.append(static_cast<const char*>(bytes), count);
}

void CMemFile::WriteParts(iovec* parts, std::size_t count) {
  for (; count > 0; ++parts, --count) CMemFile::Write(parts->iov_base, parts->iov_len);
}

CReplaceFile::CReplaceFile(const CString& path) : m_target(path) {
  RemoveLeft(path + kSuffix);
  if (!Open(path + kSuffix, modeWrite | modeCreate | modeNew)) Fail();
  ::flock(m_handle, LOCK_EX | LOCK_NB);  // may fail: some network file systems have no locks
}

void CReplaceFile::RemoveLeft(const CString& path) {
  const int handle = ::open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (handle < 0) return;
  if (::flock(handle, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) ::unlink(path);
  ::close(handle);
}

CReplaceFile::~CReplaceFile() {
  if (!m_replaced) ::unlink(m_path);
}

void CReplaceFile::Replace() {
  Sync();
  const CFile lock(::dup(m_handle));  // keeps the lock until the new image has its name
  Close();
  if (::rename(m_path, m_target) != 0) Fail();
  m_replaced = true;
  SyncDirectory(DirectoryOf(m_target));
}

}  // namespace vastra
