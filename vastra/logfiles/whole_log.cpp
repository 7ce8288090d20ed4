#include "vastra/logfiles/whole_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "vastra/logfiles/log_format.h"
#include "vastra/platform/file_layer.h"
#include "vastra/platform/time.h"

namespace vastra {
namespace {

// A regular file that is read at any place, a part of it at a time. Each operation returns false and does not
// move if the field extends beyond the end or cannot be read.
class CProbedFile {
 public:
  explicit CProbedFile(const CString& path, int flags)
      : m_file(FileLayer().Open(path, O_RDONLY | O_NONBLOCK | flags, 0)) {
    CFileStatus status;
    if (m_file >= 0 && FileLayer().StatOpen(m_file, status) && status.type == EFileType::regular)
      m_size = status.size;
  }
  CProbedFile(const CProbedFile&) = delete;
  CProbedFile& operator=(const CProbedFile&) = delete;
  ~CProbedFile() {
    if (m_file >= 0) FileLayer().Close(m_file);
  }

  std::uint64_t Size() const { return m_size; }
  std::uint64_t Place() const { return m_at; }
  void MoveTo(std::uint64_t place) { m_at = std::min(place, m_size); }
  bool Skip(std::uint64_t bytes) {
    if (bytes > m_size - m_at) return false;
    m_at += bytes;
    return true;
  }
  template <class T>
  bool Get(T& value) {
    if (m_size - m_at < sizeof value || !Load(sizeof value)) return false;
    std::memcpy(&value, m_bytes + (m_at - m_begin), sizeof value);
    m_at += sizeof value;
    return true;
  }
  bool GetCount(std::uint32_t& count) {
    const std::uint64_t before = m_at;
    std::uint16_t low = 0;
    const bool isThere = Get(low) && (low != kLongCount || Get(count));
    if (isThere && low != kLongCount) count = low;
    if (!isThere) m_at = before;
    return isThere;
  }
  bool SkipText() {
    constexpr std::uint8_t kLongText = 0xFF;
    std::uint8_t size = 0;
    if (!Get(size)) return false;
    std::uint32_t length = size;
    return (size != kLongText || GetCount(length)) && Skip(length);
  }

 private:
  // Ensures that the next count bytes, which the file has, are in m_bytes.
  bool Load(std::size_t count) {
    if (m_at >= m_begin && m_at + count <= m_begin + m_count) return true;
    m_begin = m_at;
    m_count = 0;
    if (::lseek(m_file, static_cast<off_t>(m_at), SEEK_SET) < 0) return false;
    while (m_count < count) {
      const ssize_t part = FileLayer().Read(m_file, m_bytes + m_count, sizeof m_bytes - m_count);
      if (part <= 0) return false;
      m_count += static_cast<std::size_t>(part);
    }
    return true;
  }

  int m_file;
  std::uint64_t m_size = 0, m_at = 0;
  std::uint64_t m_begin = 0;  // the place of m_bytes in the file
  std::size_t m_count = 0;    // bytes in m_bytes
  char m_bytes[8192];
};

// Whether the number of times, the times and the trailer follow, and then with isStrict the end of the file.
bool IsEnd(CProbedFile& file, std::uint32_t samples, bool isStrict) {
  std::uint32_t times = 0;
  return file.GetCount(times) && (isStrict ? times == samples : times >= samples) &&
         file.Skip(times * std::uint64_t{sizeof(_timeb)}) && file.Skip(sizeof(CLogTrailer)) &&
         (!isStrict || file.Place() == file.Size());
}

bool SkipRecords(CProbedFile& file, std::uint32_t samples) {
  for (std::uint32_t i = 0, count = 0; i < samples; ++i)
    if (!file.GetCount(count) || !file.Skip(count * std::uint64_t{sizeof(float)})) return false;
  return true;
}

bool SkipEqualRecords(CProbedFile& file, std::uint32_t samples, std::uint32_t values) {
  const std::uint64_t record = SizeOfCount(values) + values * std::uint64_t{sizeof(float)};
  return samples <= (file.Size() - file.Place()) / record && file.Skip(samples * record);
}

// With isStrict the log is the whole file, without more bytes can follow. False, too, for more than
// mostRecords records that are not all of one size.
bool IsWholeBinary(CProbedFile& file, bool isStrict, std::uint32_t mostRecords) {
  CLogStart start;
  std::uint32_t names = 0, samples = 0;
  if (!file.Get(start) || start.m_magic != CLogStart::kMagic) return false;
  if (!file.SkipText() || !file.GetCount(names)) return false;
  for (std::uint32_t i = 0; i < names; ++i)
    if (!file.SkipText()) return false;
  if (!file.Get(samples)) return false;
  const std::uint64_t records = file.Place();
  if (SkipEqualRecords(file, samples, names) && IsEnd(file, samples, isStrict)) return true;
  file.MoveTo(records);
  return samples <= mostRecords && SkipRecords(file, samples) && IsEnd(file, samples, isStrict);
}

bool IsWholeText(CProbedFile& file) {
  char last = 0;
  if (file.Size() == 0) return false;
  file.MoveTo(file.Size() - 1);
  return file.Get(last) && last == '\n';
}

}  // namespace

bool IsWholeLog(const CString& path, ELogForm form) {
  CProbedFile file(path, O_NOFOLLOW);
  return form == ELogForm::binary ? IsWholeBinary(file, true, UINT32_MAX) : IsWholeText(file);
}

CString FindExcess(const CString& path, std::uint64_t size) {
  constexpr std::uint64_t kLarge = std::uint64_t{16} << 20, kBlockBytes = 512, kHole = 16;
  constexpr std::uint32_t kMostRecords = 1'000'000;  // that are looked at one by one
  if (size < kLarge) return {};
  CProbedFile file(path, 0);
  struct stat status = {};
  const bool isWhole = IsWholeBinary(file, false, kMostRecords);
  const bool isHole =
      ::stat(path, &status) == 0 && static_cast<std::uint64_t>(status.st_blocks) * kBlockBytes < size / kHole;
  if (isWhole ? size - file.Place() < kLarge : !isHole) return {};
  const CString bytes = "has " + CString(std::to_string(size)) + " bytes, ";
  return isWhole ? bytes + "of which its counts need " + CString(std::to_string(file.Place()))
                 : bytes + "of which most are a hole in the file";
}

}  // namespace vastra
