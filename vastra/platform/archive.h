// CArchive: stores fields to a CFile or loads them from it. Log files and configuration files are written
// with it. All integers and floats are little-endian; there are no tags. The encodings are:
//
//   u32      4 bytes
//   float    4 bytes, IEEE 754 single precision
//   count    2 bytes; from 0xFFFF on the bytes FF FF and then 4 bytes
//   string   the length, then the bytes. A length below 255 has 1 byte; one up to 0xFFFD has FF and 2 bytes;
//            from 0xFFFE on it has FF, FF FF and 4 bytes
//
// A length or count is compared with the rest of the file before memory is allocated for it.
#pragma once

#include <cstdint>
#include <memory>

#include "vastra/platform/array.h"
#include "vastra/platform/file.h"
#include "vastra/platform/list.h"

namespace vastra {

class VASTRA_API CArchiveException {
 public:
  explicit CArchiveException(const char* text) : m_text(text) {}
  CString Text() const { return m_text; }

 private:
  const char* m_text;
};

class VASTRA_API CArchive {
 public:
  static constexpr UINT store = 0;
  static constexpr UINT load = 1;
  static constexpr std::size_t kBufferSize = 4096;

  // The caller keeps file and leaves it open while the archive exists. Loading starts at the beginning of the
  // file.
  CArchive(CFile* file, UINT mode, std::size_t bufferSize = kBufferSize);
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;
  ~CArchive() = default;  // discards the buffer: the caller ends storing with Close

  bool IsStoring() const { return m_mode == store; }
  bool IsLoading() const { return m_mode == load; }
  void Flush();  // writes the buffer to the file
  void Close() { Flush(); }

  // The number of bytes that can still be read.
  std::uint64_t Remaining() const { return m_after + (m_end - m_place); }

  // Reads up to count bytes. Returns how many it has read: fewer than count only at the end of the file.
  std::size_t Read(void* bytes, std::size_t count);
  void Write(const void* bytes, std::size_t count);

  // Each throws CArchiveException if the file ends inside the field.
  CArchive& operator>>(std::uint32_t& value);
  CArchive& operator>>(std::int32_t& value);
  CArchive& operator>>(std::uint16_t& value);
  CArchive& operator>>(std::uint8_t& value);
  CArchive& operator>>(float& value);
  CArchive& operator>>(CString& text);
  CArchive& operator<<(std::uint32_t value);
  CArchive& operator<<(std::int32_t value);
  CArchive& operator<<(std::uint16_t value);
  CArchive& operator<<(std::uint8_t value);
  CArchive& operator<<(float value);
  CArchive& operator<<(const CString& text);

  void WriteCount(std::uint32_t count);
  // Reads the count of elements that have at least elementBytes (1 or more) each. Throws CArchiveException if
  // the rest of the file is too short for them.
  std::uint32_t ReadCount(std::size_t elementBytes);
  // The same check for a count that was read as another field.
  void CheckCount(std::uint64_t count, std::size_t elementBytes) const;

  // The bytes of text, with no terminator and no line end.
  void WriteString(const char* text);
  // Sets line to the next line without its line end, which is "\n" or "\r\n". Returns 0 at the end of the
  // file.
  int ReadString(CString& line);

  // Loading replaces the elements of an array, but appends to a list. For a list the count 0xFFFFFFFF means
  // none.
  void Serialize(CStringArray& array);
  void Serialize(CStringList& list);

 private:
  template <class T>
  CArchive& Put(T value);
  template <class T>
  CArchive& Get(T& value);
  void ReadAll(void* bytes, std::size_t count);
  std::uint32_t ReadRawCount();
  bool Fill();

  CFile* m_file;
  UINT m_mode;
  std::size_t m_size;
  std::unique_ptr<char[]> m_buffer;
  std::size_t m_place = 0;    // offset in the buffer of the next byte to store or load
  std::size_t m_end = 0;      // loading: how many bytes the buffer has
  std::uint64_t m_after = 0;  // loading: bytes of the file after those in the buffer
};

}  // namespace vastra
