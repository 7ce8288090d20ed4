// CFile: a file on disk; CMemFile: a file in memory; CReplaceFile: a file that replaces another one whole or
// not at all. Every failure throws CFileException with the path and the system's reason.
#pragma once

#include <cstdint>
#include <string>

#include "vastra/platform/file_layer.h"

namespace vastra {

class VASTRA_API CFileException {
 public:
  CFileException(CString path, int error) : m_path(std::move(path)), m_error(error) {}
  CString Text() const;  // the system's reason, without the path

  CString m_path;
  int m_error;  // errno
};

class VASTRA_API CFile {
 public:
  static constexpr UINT modeRead = 0;
  static constexpr UINT modeWrite = 1;
  static constexpr UINT modeCreate = 2;  // with modeWrite: empties an existing file
  static constexpr UINT modeNew = 4;     // with modeCreate: fails if the file exists

  CFile() = default;
  explicit CFile(int handle) : m_handle(handle) {}  // owns the open descriptor
  CFile(const CString& path, UINT mode);            // as Open, but throws on failure
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile();

  // Returns 1, or 0 with the reason in errno.
  int Open(const CString& path, UINT mode);
  bool IsOpen() const { return m_handle >= 0; }
  const CString& GetPath() const { return m_path; }

  // Reads up to count bytes. Returns how many it has read: fewer than count only at the end of the file.
  virtual std::size_t Read(void* bytes, std::size_t count);
  // The same for the bytes from place on. The place of the next Read does not change.
  virtual std::size_t ReadAt(void* bytes, std::size_t count, std::uint64_t place);
  virtual void Write(const void* bytes, std::size_t count);
  // Writes all parts in order, with as few system calls as possible. Changes the elements of parts.
  virtual void WriteParts(iovec* parts, std::size_t count);
  // The size of the file in bytes; the largest number for a file without a size, such as a pipe.
  virtual std::uint64_t GetLength() const;
  // Of the open file. Returns 1, or 0 with the reason in errno.
  int GetStatus(CFileStatus& status) const;
  virtual void Sync();   // returns when all bytes are on the disk
  virtual void Close();  // no effect on a closed file

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
  std::size_t ReadAt(void* bytes, std::size_t count, std::uint64_t place) override;
  void Write(const void* bytes, std::size_t count) override;
  void WriteParts(iovec* parts, std::size_t count) override;
  std::uint64_t GetLength() const override { return m_bytes.size(); }
  void Sync() override {}
  void Close() override {}

 private:
  std::string m_bytes;
  std::size_t m_place = 0;  // of the next read
};

// A new image of the file at path. The image is written to path + ".part". Replace syncs it and renames it
// over the old file, so that a reader finds the whole old image or the whole new one, even after a power cut.
// The destructor removes an image that has not replaced the old file. The image is locked while it is being
// written, which distinguishes it from one that a killed process has left.
class VASTRA_API CReplaceFile : public CFile {
 public:
  static constexpr const char* kSuffix = ".part";

  // Throws CFileException if another process is writing the image or the image cannot be created.
  explicit CReplaceFile(const CString& path);
  ~CReplaceFile() override;
  void Replace();

  // Removes the image at path, which includes the suffix, unless a process is writing it.
  static void RemoveLeft(const CString& path);

 private:
  CString m_target;
  bool m_replaced = false;
};

}  // namespace vastra
