// CFileLayer: the calls of the system for files and folders. CFile, the functions of file_system.h, the logs
// and the journals use the installed layer. The class itself makes the system calls; a test installs a
// derived one, which can fail a call or record what has reached the disk.
//
// Unless stated otherwise a call returns 1, or 0 with the reason in errno. A call that a signal interrupts is
// repeated.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "vastra/platform/string.h"

struct iovec;

namespace vastra {

enum class EFileType { regular, folder, other };

struct CFileStatus {
  EFileType type = EFileType::other;
  std::uint64_t size = 0;               // in bytes
  std::int64_t lastWrite = 0;           // nanoseconds since 1970-01-01 00:00:00 UTC
  std::uint64_t device = 0, inode = 0;  // the same for all names of a file

  bool operator==(const CFileStatus&) const = default;
};

struct CFolderEntry {
  CString name;  // without the folder
  CFileStatus status;

  bool operator==(const CFolderEntry&) const = default;
};

// Whether name ends in ending, in any letter case of A to Z.
VASTRA_API bool EndsIn(std::string_view name, std::string_view ending);

enum class EFileLock { taken, held, unsupported };

class VASTRA_API CFileLayer {
 public:
  CFileLayer() = default;
  CFileLayer(const CFileLayer&) = delete;
  CFileLayer& operator=(const CFileLayer&) = delete;
  virtual ~CFileLayer() = default;

  // Opens the file at path with the flags of open(2), and O_CLOEXEC; mode has the permissions of a new file.
  // Returns the descriptor, or -1.
  virtual int Open(const CString& path, int flags, mode_t mode);
  // Return the number of bytes, which may be fewer than asked for, or -1. count of Write: at most IOV_MAX.
  virtual ssize_t Read(int file, void* bytes, std::size_t count);
  virtual ssize_t Write(int file, const iovec* parts, int count);
  // The same as Read for the bytes from place on. The place of the next Read does not change.
  virtual ssize_t ReadAt(int file, void* bytes, std::size_t count, std::uint64_t place);
  // Returns when all bytes of the file are on the disk. After a failure the bytes may be lost, even if the
  // next Sync of the same file succeeds.
  virtual int Sync(int file);
  // Cuts the file after length bytes. The next write follows them.
  virtual int Truncate(int file, std::uint64_t length);
  // Releases the descriptor, also on failure.
  virtual int Close(int file);

  // With mayReplace, to may exist. Without it, an existing to is EEXIST; on a file system that has neither
  // exclusive renaming nor links, a file that appears at the same moment is replaced.
  virtual int Rename(const CString& from, const CString& to, bool mayReplace);
  // Removes a file, a pipe or a link.
  virtual int Remove(const CString& path);
  virtual int RemoveEmptyFolder(const CString& path);
  // Returns when the names in the folder are on the disk. 1 where the file system cannot sync a folder.
  virtual int SyncFolder(const CString& path);

  // Appends the entries of the folder that wanted accepts by their names, in no order and without "." and
  // "..". On 0 entries has those found before the failure. A link counts as what it leads to; mayBeFolder is
  // false for it, and for what is known not to be a folder.
  using CWanted = std::function<bool(std::string_view name, bool mayBeFolder)>;
  virtual int ListWanted(const CString& folder, const CWanted& wanted, std::vector<CFolderEntry>& entries);
  // The same for the names that end in ending, in any letter case.
  int List(const CString& folder, const CString& ending, std::vector<CFolderEntry>& entries);
  virtual int Stat(const CString& path, CFileStatus& status);  // follows links
  virtual int StatOpen(int file, CFileStatus& status);
  // Locks an open file against other processes, and other descriptors of this one, until it is closed. Does
  // not wait.
  virtual EFileLock Lock(int file);
  // The bytes that the caller may still write to the file system of path.
  virtual int FreeBytes(const CString& path, std::uint64_t& bytes);
};

// Installs layer, which the caller keeps; null installs the system's calls. Returns the previous layer, null
// for the system's. Must not be called while other threads use files.
VASTRA_API CFileLayer* SetFileLayer(CFileLayer* layer);

// The installed layer.
VASTRA_API CFileLayer& FileLayer();

}  // namespace vastra
