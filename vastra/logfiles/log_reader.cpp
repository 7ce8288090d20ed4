#include "vastra/logfiles/log_reader.h"

#include <cerrno>
#include <climits>
#include <cstddef>
#include <limits>
#include <new>

#include "vastra/logfiles/whole_log.h"
#include "vastra/platform/file_layer.h"

namespace vastra {
namespace {

constexpr std::size_t kFirstTimeEnd = offsetof(CLogStart, m_firstTime) + sizeof(CLogStart::m_firstTime);

}  // namespace

bool CLogCursor::Skip(std::uint64_t bytes) {
  if (bytes > Left()) return false;
  m_at += bytes;
  return true;
}

template <class T>
bool CLogCursor::Get(T& value) {
  if (Left() < sizeof value) return false;
  std::memcpy(&value, m_at, sizeof value);
  m_at += sizeof value;
  return true;
}

bool CLogCursor::GetCount(std::uint32_t& count) {
  if (Left() < kShortCountSize) return false;
  std::uint16_t low;
  std::memcpy(&low, m_at, sizeof low);
  if (low == kLongCount && Left() < kLongCountSize) return false;
  m_at = GetCountAt(m_at, count);
  return true;
}

bool CLogCursor::GetText(std::string_view& text) {
  constexpr std::uint8_t kLongText = 0xFF;
  CLogCursor next = *this;
  std::uint8_t size = 0;
  if (!next.Get(size)) return false;
  std::uint32_t length = size;
  if (size == kLongText && !next.GetCount(length)) return false;
  text = {next.m_at, length};
  if (!next.Skip(length)) return false;
  *this = next;
  return true;
}

int CLogReader::Open(const CString& path) {
  CFile file;
  CFileStatus status;
  const bool isThere = FileLayer().Stat(path, status);
  if (isThere && status.type == EFileType::other) return Fail("is not a regular file");  // a FIFO would wait
  m_error = 0;
  if (const CString excess = isThere ? FindExcess(path, status.size) : CString(); !excess.IsEmpty())
    return Fail(excess);
  if (file.Open(path, CFile::modeRead)) return Open(file);
  m_error = errno;
  return Fail(CFileException(path, m_error).Text());
}

int CLogReader::Open(CFile& file) {
  m_error = 0;
  try {
    return ReadImage(file) && ReadHead();
  } catch (const CFileException& fault) {
    m_error = fault.m_error;
    return Fail(fault.Text());
  } catch (const std::bad_alloc&) {
    m_error = ENOMEM;
    return Fail("is too large for the memory");
  }
}

int CLogReader::ReadImage(CFile& file) {
  const std::uint64_t length = file.GetLength();
  if (length == std::numeric_limits<std::uint64_t>::max()) return Fail("is not a regular file");
  char* image = m_samples.MakeImage(length);
  m_image = image;
  m_cursor = {image, image + file.Read(image, length)};
  return 1;
}

int CLogReader::ReadHead() {
  std::string_view reserved, name;
  std::uint32_t magic = 0;
  if (CLogCursor start = m_cursor; start.Get(magic) && magic != CLogStart::kMagic)
    return Fail("is not a log: its first bytes are those of another format");
  if (!m_cursor.Get(m_start)) return FailCut("the start");
  if (!m_cursor.GetText(reserved)) return FailCut("the reserved text");
  if (!m_cursor.GetCount(m_nameCount)) return FailCut("the number of names");
  m_names = m_cursor.m_at;
  for (std::uint32_t i = 0; i < m_nameCount; ++i)
    if (!m_cursor.GetText(name)) return FailCut("name " + CString(std::to_string(i + 1)));
  return m_nameCount <= INT_MAX ? 1 : Fail("has too many names");
}

void CLogReader::GetNames(CStringArray& names) const {
  CLogCursor cursor = {m_names, m_cursor.m_end};
  names.SetSize(static_cast<int>(m_nameCount));
  for (CString& name : names) {
    std::string_view text;
    cursor.GetText(text);
    name = CString(text);
  }
}

bool CLogReader::HasNames(const CStringArray& names) const {
  CLogCursor cursor = {m_names, m_cursor.m_end};
  if (m_nameCount != static_cast<std::uint32_t>(names.GetSize())) return false;
  for (const CString& name : names)
    if (std::string_view text; !cursor.GetText(text) || text != name.View()) return false;
  return true;
}

int CLogReader::ReadSamples() {
  std::uint32_t count = 0;
  if (!m_cursor.Get(count)) return FailCut("the number of samples");
  const char* records = m_cursor.m_at;
  try {
    return SkipRecords(count) && TakeTimes(count, records);
  } catch (const std::bad_alloc&) {
    return Fail("is too large for the memory");
  }
}

int CLogReader::SkipRecords(std::uint32_t count) {
  CLogCursor next = m_cursor;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t values = 0;
    if (!next.GetCount(values) || values > INT_MAX || !next.Skip(values * std::uint64_t{sizeof(float)}))
      return FailCut("the values of sample " + CString(std::to_string(i + 1)));
    m_cursor = next;
  }
  return 1;
}

int CLogReader::TakeTimes(std::uint32_t count, const char* records) {
  const char* end = m_cursor.m_at;
  std::uint32_t times = 0;
  CLogTrailer trailer = 0;
  if (!m_cursor.GetCount(times)) return FailCut("the number of times");
  if (times < count) {
    CString fault;
    fault.Format("has only %u times for its %u samples (byte %zu)", times, count, Offset(end));
    return Fail(fault);
  }
  const char* first = m_cursor.m_at;
  if (!m_cursor.Skip(times * std::uint64_t{sizeof(_timeb)})) return FailCut("the times");
  if (!m_cursor.Get(trailer)) return FailCut("the trailer");
  m_samples.TakeImage(Offset(records), Offset(end), count, first);
  return 1;
}

int CLogReader::Fail(const CString& fault) {
  m_fault = fault;
  return 0;
}

int CLogReader::FailCut(const CString& field) {
  CString where;
  where.Format(" (from byte %zu on)", Offset(m_cursor.m_at));
  CString fault;
  fault.Format("ends at byte %zu inside ", Offset(m_cursor.m_end));
  return Fail(fault + field + where);
}

ELogKind ReadFirstTime(const CString& path, std::int32_t& time) {
  CLogStart start;
  CFileStatus status;
  if (FileLayer().Stat(path, status) && status.type == EFileType::other) return ELogKind::unreadable;
  try {
    CFile file(path, CFile::modeRead);
    const std::size_t size = file.Read(&start, kFirstTimeEnd);
    if (size < sizeof start.m_magic) return ELogKind::unreadable;
    if (start.m_magic != CLogStart::kMagic) return ELogKind::other;
    time = start.m_firstTime;
    return size == kFirstTimeEnd ? ELogKind::log : ELogKind::unreadable;
  } catch (const CFileException&) {
    return ELogKind::unreadable;
  }
}

}  // namespace vastra
