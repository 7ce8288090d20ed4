// CArchive: a stream of fields over a CFile, storing or loading. All integers and floats are little-endian;
// there are no tags. The encodings are those of the log files and of the configuration blocks:
//
//   u32      4 bytes
//   float    4 bytes, IEEE 754 single precision
//   count    2 bytes; from 0xFFFF on the bytes FF FF and then 4 bytes
//   string   its length and its bytes. The length is 1 byte below 255; FF and 2 bytes up to 0xFFFD; FF, FF FF
//   and
//            4 bytes from 0xFFFE on
//
// A length or count is compared with what is left of the file before memory is taken for it.
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

  // file stays the caller's, and open, for as long as the archive. Loading starts at the beginning of the
  // file.
  CArchive(CFile* file, UINT mode, std::size_t bufferSize = kBufferSize);
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;
  ~CArchive() = default;  // drops what is still in the buffer: whoever stores calls Close

  bool IsStoring() const { return m_mode == store; }
  bool IsLoading() const { return m_mode == load; }
  void Flush();  // hands what is in the buffer to the file
  void Close() { Flush(); }

  // Bytes that can still be read.
  std::uint64_t Remaining() const { return m_behind + (m_end - m_place); }

  // Reads up to count bytes and gives their number, below count only at the end of the file.
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
  // A count of elements that take at least elementBytes (1 or more) each: throws if the rest of the file
  // cannot hold them.
  std::uint32_t ReadCount(std::size_t elementBytes);
  // The same test for a count that was read by other means.
  void CheckCount(std::uint64_t count, std::size_t elementBytes) const;

  // The bytes of text, with no terminator and no line end.
  void WriteString(const char* text);
  // Reads a line, up to its line end, which it drops: "\n", or "\r\n" as one. 0 at the end of the file.
  int ReadString(CString& line);

  // An array takes exactly the elements that are read; a list appends them to what it holds. For a list the
  // count 0xFFFFFFFF means none.
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
  std::size_t m_place = 0;     // of the next byte to store or load in the buffer
  std::size_t m_end = 0;       // loading: end of what the buffer holds
  std::uint64_t m_behind = 0;  // loading: bytes of the file behind the buffer
};

}  // namespace vastra
