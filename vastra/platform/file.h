// CFile: a file of bytes, and its two relatives: one in memory, and one that replaces another file whole or
// not at all. Whatever fails throws CFileException, which names the file and what is wrong with it.
#pragma once

#include <cstdint>
#include <string>

#include "vastra/platform/string.h"

struct iovec;

namespace vastra {

class VASTRA_API CFileException {
 public:
  CFileException(CString path, int error) : m_path(std::move(path)), m_error(error) {}
  CString Text() const;  // the system's words, without the path

  CString m_path;
  int m_error;  // errno
};

class VASTRA_API CFile {
 public:
  static constexpr UINT modeRead = 0;
  static constexpr UINT modeWrite = 1;
  static constexpr UINT modeCreate = 2;  // with modeWrite: a file that exists is emptied
  static constexpr UINT modeNew = 4;     // with modeCreate: a file that exists is a failure

  CFile() = default;
  explicit CFile(int handle) : m_handle(handle) {}  // an open descriptor, which is closed with the file
  CFile(const CString& path, UINT mode);            // Open that throws
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile();

  // 1, or 0 with the reason in errno.
  int Open(const CString& path, UINT mode);
  bool IsOpen() const { return m_handle >= 0; }
  const CString& GetPath() const { return m_path; }

  // Reads up to count bytes and gives their number, below count only at the end of the file.
  virtual std::size_t Read(void* bytes, std::size_t count);
  virtual void Write(const void* bytes, std::size_t count);
  // Writes all parts, in order, in as few system calls as there can be. The parts are used up.
  virtual void WriteParts(iovec* parts, std::size_t count);
  // Size of the file in bytes; the largest number for what has no size, such as a pipe.
  virtual std::uint64_t GetLength() const;
  virtual void Sync();   // returns when all bytes are on the disk
  virtual void Close();  // safe on a closed file

 protected:
  [[noreturn]] void Fail() const;

  int m_handle = -1;
  CString m_path;
};

// A file in memory.
class VASTRA_API CMemFile : public CFile {
 public:
  CMemFile() = default;
  explicit CMemFile(std::string bytes) : m_bytes(std::move(bytes)) {}

  const std::string& Bytes() const { return m_bytes; }
  std::size_t Read(void* bytes, std::size_t count) override;
  void Write(const void* bytes, std::size_t count) override;
  void WriteParts(iovec* parts, std::size_t count) override;
  std::uint64_t GetLength() const override { return m_bytes.size(); }
  void Sync() override {}
  void Close() override {}

 private:
  std::string m_bytes;
  std::size_t m_place = 0;  // of the next read
};

// A new image of the file at path. It is written beside it, as path with ".part" behind it; Replace syncs it
// and renames it over the old file, so that a reader, also one after a power cut, finds the whole old image
// or the whole new one. Without a Replace that succeeded the destructor takes the new image away and the old
// file stays. The image is locked as long as it is being written: that tells it from one that a killed
// process left.
class VASTRA_API CReplaceFile : public CFile {
 public:
  static constexpr const char* kSuffix = ".part";

  explicit CReplaceFile(const CString& path);  // throws if it is being written or cannot be
  ~CReplaceFile() override;
  void Replace();

  // Takes the image at path, its suffix included, away unless a process is writing it.
  static void RemoveLeft(const CString& path);

 private:
  CString m_target;
  bool m_replaced = false;
};

}  // namespace vastra
