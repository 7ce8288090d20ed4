#include "vastra/logfiles/probed_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "vastra/logfiles/log_format.h"

namespace vastra {

// O_NONBLOCK: a FIFO would wait for a writer.
CProbedFile::CProbedFile(const CString& path, int flags)
    : m_path(path), m_file(FileLayer().Open(path, O_RDONLY | O_NONBLOCK | flags, 0)) {
  if (m_file < 0 || !FileLayer().StatOpen(m_file, m_status)) {
    m_error = errno;
    Close();
  } else if (m_status.type != EFileType::regular) {
    m_status.size = 0;
    Close();
  }
}

void CProbedFile::Close() {
  if (m_file >= 0) FileLayer().Close(m_file);
  m_file = -1;
}

CString CProbedFile::Fault() const {
  if (m_error) return CString(std::generic_category().message(m_error));
  return m_status.type == EFileType::regular ? "" : "is not a regular file";
}

bool CProbedFile::GetCount(std::uint32_t& count) {
  const std::uint64_t before = m_at;
  std::uint16_t low = 0;
  const bool isThere = Get(low) && (low != kLongCount || Get(count));
  if (isThere && low != kLongCount) count = low;
  if (!isThere) m_at = before;
  return isThere;
}

bool CProbedFile::SkipText() {
  constexpr std::uint8_t kLongText = 0xFF;
  const std::uint64_t before = m_at;
  std::uint8_t size = 0;
  if (!Get(size)) return false;
  std::uint32_t length = size;
  if ((size != kLongText || GetCount(length)) && Skip(length)) return true;
  m_at = before;
  return false;
}

bool CProbedFile::Read(void* bytes, std::size_t count, std::uint64_t place) {
  for (std::size_t done = 0; done < count;) {
    const ssize_t part =
        FileLayer().ReadAt(m_file, static_cast<char*>(bytes) + done, count - done, place + done);
    if (part < 0) m_error = errno;
    if (part <= 0) return false;
    done += static_cast<std::size_t>(part);
  }
  return true;
}

bool CProbedFile::Load(std::size_t count) {
  if (m_at >= m_begin && m_at + count <= m_begin + m_count) return true;
  m_begin = m_at;
  m_count = 0;
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(sizeof m_bytes, Left()));
  if (!Read(m_bytes, size, m_at)) return false;
  m_count = size;
  return m_count >= count;
}

}  // namespace vastra
