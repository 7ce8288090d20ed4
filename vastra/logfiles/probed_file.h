// CProbedFile: a regular file that is read at any place, a part of it at a time, without trust in its bytes.
#pragma once

#include <cstring>

#include "vastra/platform/file_layer.h"

namespace vastra {

// Get, GetCount, Skip and SkipText read at Place, and each returns false and does not move if the field
// extends beyond the end of the file or cannot be read.
class CProbedFile {
 public:
  // flags: those of open(2) beside O_RDONLY. IsOpen is false, with the reason in Fault, if the file cannot be
  // opened or is not a regular file.
  explicit CProbedFile(const CString& path, int flags = 0);
  CProbedFile(const CProbedFile&) = delete;
  CProbedFile& operator=(const CProbedFile&) = delete;
  ~CProbedFile() { Close(); }

  bool IsOpen() const { return m_file >= 0; }
  void Close();
  const CString& Path() const { return m_path; }
  const CFileStatus& Status() const { return m_status; }
  std::uint64_t Size() const { return m_status.size; }  // when the file was opened
  // errno of what has failed last; 0 if nothing has, or if the file is not a regular one.
  int Error() const { return m_error; }
  // Why the file could not be opened or read; empty if it could.
  CString Fault() const;

  std::uint64_t Place() const { return m_at; }
  std::uint64_t Left() const { return Size() - m_at; }
  void MoveTo(std::uint64_t place) { m_at = place < Size() ? place : Size(); }
  bool Skip(std::uint64_t bytes) {
    if (bytes > Left()) return false;
    m_at += bytes;
    return true;
  }
  template <class T>
  bool Get(T& value) {
    if (Left() < sizeof value || !Load(sizeof value)) return false;
    std::memcpy(&value, m_bytes + (m_at - m_begin), sizeof value);
    m_at += sizeof value;
    return true;
  }
  bool GetCount(std::uint32_t& count);
  bool SkipText();

  // Reads count bytes from place on, which need not be those of Place: false if they are not there or cannot
  // be read.
  bool Read(void* bytes, std::size_t count, std::uint64_t place);

 private:
  // Ensures that the next count bytes, which the file has, are in m_bytes.
  bool Load(std::size_t count);

  CString m_path;
  int m_file;
  int m_error = 0;
  CFileStatus m_status;
  std::uint64_t m_at = 0;
  std::uint64_t m_begin = 0;  // the place of m_bytes in the file
  std::size_t m_count = 0;    // bytes in m_bytes
  char m_bytes[8192];
};

}  // namespace vastra
