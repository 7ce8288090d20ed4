// Directories and file names. Paths are bytes with "/" between their parts.
#pragma once

#include <cstdint>

#include "vastra/platform/array.h"

namespace vastra {

struct CFileEntry {
  CString m_name;            // with its extension, without the directory
  std::int64_t m_lastWrite;  // nanoseconds since 1970-01-01 00:00:00 UTC
};

// The regular files of directory whose name ends in extension, in any letter case, sorted by the bytes of
// their names. Empty if the directory cannot be read.
VASTRA_API CArray<CFileEntry> ListFiles(const CString& directory, const CString& extension);

VASTRA_API bool FileExists(const CString& path);
// Bytes of the regular file at path; 0 if there is none.
VASTRA_API std::uint64_t FileSize(const CString& path);
// Returns 1, or 0 with the reason in errno.
VASTRA_API int DeleteFile(const CString& path);
// Whether directory could become the current directory of this process.
VASTRA_API bool CanEnter(const CString& directory);
// Changes the current directory of the process. Returns 1, or 0 with the reason in errno.
VASTRA_API int SetCurrentDirectory(const CString& directory);

// directory + "/" + name, or name alone if directory is empty.
VASTRA_API CString JoinPath(const CString& directory, const CString& name);
// path, from the root directory on; a relative path begins in the current directory of the process.
VASTRA_API CString AbsolutePath(const CString& path);
// The part of path before its last "/"; "." if it has none, "/" for a file in the root directory.
VASTRA_API CString DirectoryOf(const CString& path);
// Syncs the entries of directory to the disk. Returns 1, or 0 with the reason in errno; 1 where the file
// system cannot sync a directory.
VASTRA_API int SyncDirectory(const CString& directory);

}  // namespace vastra
