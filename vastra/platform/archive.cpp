#include "vastra/platform/archive.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vastra {

static_assert(std::endian::native == std::endian::little, "fields are copied byte for byte");

namespace {
constexpr const char* kEnd = "the file ends too early";
constexpr const char* kCount = "a count is larger than the rest of the file";
constexpr std::uint32_t kNone = 0xFFFFFFFF;
}  // namespace

CArchive::CArchive(CFile* file, UINT mode, std::size_t bufferSize)
    : m_file(file), m_mode(mode), m_size(bufferSize), m_buffer(std::make_unique<char[]>(bufferSize)) {
  if (IsLoading()) m_after = file->GetLength();
}

void CArchive::Flush() {
  if (IsLoading() || m_place == 0) return;
  m_file->Write(m_buffer.get(), std::exchange(m_place, 0));
}

bool CArchive::Fill() {
  m_place = 0;
  m_end = m_file->Read(m_buffer.get(), m_size);
  m_after = m_end == m_size ? m_after - std::min<std::uint64_t>(m_after, m_end) : 0;
  return m_end != 0;
}

std::size_t CArchive::Read(void* bytes, std::size_t count) {
  std::size_t done = 0;
  while (done < count && (m_place < m_end || Fill())) {
    const std::size_t part = std::min(count - done, m_end - m_place);
    std::memcpy(static_cast<char*>(bytes) + done, m_buffer.get() + m_place, part);
    m_place += part;
    done += part;
  }
  return done;
}

void CArchive::ReadAll(void* bytes, std::size_t count) {
  if (Read(bytes, count) != count) throw CArchiveException(kEnd);
}

void CArchive::Write(const void* bytes, std::size_t count) {
  const char* from = static_cast<const char*>(bytes);
  while (count != 0) {
    const std::size_t part = std::min(count, m_size - m_place);
    std::memcpy(m_buffer.get() + m_place, from, part);
    m_place += part;
    from += part;
    count -= part;
    if (m_place == m_size) Flush();
  }
}

template <class T>
CArchive& CArchive::Put(T value) {
  Write(&value, sizeof value);
  return *this;
}

template <class T>
CArchive& CArchive::Get(T& value) {
  ReadAll(&value, sizeof value);
  return *this;
}

CArchive& CArchive::operator>>(std::uint32_t& value) { return Get(value); }
CArchive& CArchive::operator>>(std::int32_t& value) { return Get(value); }
CArchive& CArchive::operator>>(std::uint16_t& value) { return Get(value); }
CArchive& CArchive::operator>>(std::uint8_t& value) { return Get(value); }
CArchive& CArchive::operator>>(float& value) { return Get(value); }
CArchive& CArchive::operator<<(std::uint32_t value) { return Put(value); }
CArchive& CArchive::operator<<(std::int32_t value) { return Put(value); }
CArchive& CArchive::operator<<(std::uint16_t value) { return Put(value); }
CArchive& CArchive::operator<<(std::uint8_t value) { return Put(value); }
CArchive& CArchive::operator<<(float value) { return Put(value); }

CArchive& CArchive::operator<<(const CString& text) {
  const auto length = static_cast<std::uint32_t>(text.GetLength());
  if (length < 0xFF) {
    Put(static_cast<std::uint8_t>(length));
  } else if (length < 0xFFFE) {
    Put(std::uint8_t{0xFF}).Put(static_cast<std::uint16_t>(length));
  } else {
    Put(std::uint8_t{0xFF}).Put(std::uint16_t{0xFFFF}).Put(length);
  }
  Write(text.View().data(), length);
  return *this;
}

CArchive& CArchive::operator>>(CString& text) {
  std::uint8_t byte = 0;
  std::uint16_t word = 0;
  Get(byte);
  std::uint32_t length = byte;
  if (byte == 0xFF) {
    Get(word);
    length = word;
    if (word == 0xFFFF) Get(length);
  }
  CheckCount(length, 1);
  std::string bytes(length, '\0');
  ReadAll(bytes.data(), length);
  text = CString(std::move(bytes));
  return *this;
}

void CArchive::WriteCount(std::uint32_t count) {
  if (count < 0xFFFF)
    Put(static_cast<std::uint16_t>(count));
  else
    Put(std::uint16_t{0xFFFF}).Put(count);
}

std::uint32_t CArchive::ReadRawCount() {
  std::uint16_t low = 0;
  Get(low);
  std::uint32_t count = low;
  if (low == 0xFFFF) Get(count);
  return count;
}

std::uint32_t CArchive::ReadCount(std::size_t elementBytes) {
  const std::uint32_t count = ReadRawCount();
  CheckCount(count, elementBytes);
  return count;
}

void CArchive::CheckCount(std::uint64_t count, std::size_t elementBytes) const {
  if (count > Remaining() / elementBytes) throw CArchiveException(kCount);
}

void CArchive::WriteString(const char* text) { Write(text, std::strlen(text)); }

int CArchive::ReadString(CString& line) {
  line.Empty();
  char c = 0;
  bool any = false;
  while (Read(&c, 1) == 1) {
    any = true;
    if (c == '\n') break;
    line += c;
  }
  const int last = line.GetLength() - 1;
  if (c == '\n' && last >= 0 && line[last] == '\r') line = line.Left(last);
  return any;
}

void CArchive::Serialize(CStringArray& array) {
  if (IsStoring()) {
    WriteCount(static_cast<std::uint32_t>(array.GetSize()));
    for (const CString& text : array) *this << text;
    return;
  }
  array.SetSize(static_cast<int>(ReadCount(1)));
  for (CString& text : array) *this >> text;
}

void CArchive::Serialize(CStringList& list) {
  if (IsStoring()) {
    WriteCount(static_cast<std::uint32_t>(list.GetCount()));
    for (const CString& text : list) *this << text;
    return;
  }
  const std::uint32_t count = ReadRawCount();
  if (count == kNone) return;
  CheckCount(count, 1);
  for (std::uint32_t i = 0; i < count; ++i) {
    CString text;
    *this >> text;
    list.AddTail(text);
  }
}

}  // namespace vastra
