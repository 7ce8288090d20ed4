#include "vastra/platform/file.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "vastra/platform/file_layer.h"
#include "vastra/platform/file_system.h"

namespace vastra {

CString CFileException::Text() const { return CString(std::generic_category().message(m_error)); }

CFile::CFile(const CString& path, UINT mode) {
  if (!Open(path, mode)) Fail();
}

CFile::~CFile() {
  if (IsOpen()) FileLayer().Close(m_handle);
}

int CFile::Open(const CString& path, UINT mode) {
  if (IsOpen()) FileLayer().Close(m_handle);
  int flags = mode & modeWrite ? O_WRONLY : O_RDONLY;
  if (mode & modeCreate) flags |= O_CREAT | (mode & modeNew ? O_EXCL : O_TRUNC);
  m_path = path;
  m_handle = FileLayer().Open(path, flags, 0666);
  return IsOpen();
}

namespace {

// Calls read, which reads at most count bytes to bytes and returns how many, until all are read or none come.
template <class TRead>
bool ReadAll(void* bytes, std::size_t count, std::size_t& done, TRead read) {
  for (done = 0; done < count;) {
    const ssize_t part = read(static_cast<char*>(bytes) + done, count - done);
    if (part < 0) return false;
    if (part == 0) break;
    done += static_cast<std::size_t>(part);
  }
  return true;
}

}  // namespace

std::size_t CFile::Read(void* bytes, std::size_t count) {
  std::size_t done = 0;
  const auto read = [&](void* to, std::size_t size) { return FileLayer().Read(m_handle, to, size); };
  if (!ReadAll(bytes, count, done, read)) Fail();
  return done;
}

std::size_t CFile::ReadAt(void* bytes, std::size_t count, std::uint64_t place) {
  std::size_t done = 0;
  const auto read = [&](void* to, std::size_t size) {
    return FileLayer().ReadAt(m_handle, to, size, place + done);
  };
  if (!ReadAll(bytes, count, done, read)) Fail();
  return done;
}

int CFile::GetStatus(CFileStatus& status) const { return FileLayer().StatOpen(m_handle, status); }

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
    const ssize_t result = FileLayer().Write(m_handle, parts, batch);
    if (result < 0) Fail();
    auto done = static_cast<std::size_t>(result);
    while (parts != end && done >= parts->iov_len) done -= (parts++)->iov_len;
    if (parts == end) return;
    parts->iov_base = static_cast<char*>(parts->iov_base) + done;
    parts->iov_len -= done;
  }
}

std::uint64_t CFile::GetLength() const {
  CFileStatus status;
  if (!FileLayer().StatOpen(m_handle, status)) Fail();
  return status.type == EFileType::regular ? status.size : std::numeric_limits<std::uint64_t>::max();
}

void CFile::Sync() {
  if (!FileLayer().Sync(m_handle)) Fail();
}

void CFile::Close() {
  if (!IsOpen()) return;
  if (!FileLayer().Close(std::exchange(m_handle, -1))) Fail();
}

void CFile::Fail() const { throw CFileException(m_path, errno); }

std::size_t CMemFile::Read(void* bytes, std::size_t count) {
  const std::size_t part = std::min(count, m_bytes.size() - m_place);
  if (part) std::memcpy(bytes, m_bytes.data() + m_place, part);
  m_place += part;
  return part;
}

std::size_t CMemFile::ReadAt(void* bytes, std::size_t count, std::uint64_t place) {
  if (place >= m_bytes.size()) return 0;
  const std::size_t part = std::min(count, m_bytes.size() - static_cast<std::size_t>(place));
  std::memcpy(bytes, m_bytes.data() + place, part);
  return part;
}

void CMemFile::Write(const void* bytes, std::size_t count) {
  m_bytes.append(static_cast<const char*>(bytes), count);
}

void CMemFile::WriteParts(iovec* parts, std::size_t count) {
  for (; count > 0; ++parts, --count) CMemFile::Write(parts->iov_base, parts->iov_len);
}

CReplaceFile::CReplaceFile(const CString& path) : m_target(path) {
  const CString image = path + kSuffix;
  const auto create = [&] { return Open(image, modeWrite | modeCreate | modeNew); };
  if (!create() && errno == EEXIST) RemoveLeft(image), create();
  if (!IsOpen()) Fail();
  FileLayer().Lock(m_handle);  // may fail: some network file systems have no locks
}

void CReplaceFile::RemoveLeft(const CString& path) {
  CFileLayer& files = FileLayer();
  const int image = files.Open(path, O_WRONLY | O_NONBLOCK, 0);
  if (image < 0) return;
  if (files.Lock(image) != EFileLock::held) files.Remove(path);
  files.Close(image);
}

CReplaceFile::~CReplaceFile() {
  if (!m_replaced) FileLayer().Remove(m_path);
}

void CReplaceFile::Replace() {
  Sync();
  const CFile lock(::dup(m_handle));  // keeps the lock until the new image has its name
  Close();
  if (!FileLayer().Rename(m_path, m_target, true)) Fail();
  m_replaced = true;
  SyncDirectory(DirectoryOf(m_target));
}

}  // namespace vastra
