// Directories and names of files. Paths are bytes, with "/" between their parts.
#pragma once

#include <cstdint>

#include "vastra/platform/array.h"

namespace vastra {

struct CFileEntry {
  CString m_name;            // bare, with its extension
  std::int64_t m_lastWrite;  // nanoseconds since 1970-01-01 00:00:00 UTC
};

// The regular files of directory whose name ends in extension, letter case ignored, in byte order of their
// names. Empty if the directory cannot be read.
VASTRA_API CArray<CFileEntry> ListFiles(const CString& directory, const CString& extension);

VASTRA_API bool FileExists(const CString& path);
// 1, or 0 with the reason in errno.
VASTRA_API int DeleteFile(const CString& path);
// Whether directory could become the current directory of this process.
VASTRA_API bool CanEnter(const CString& directory);
// Changes the current directory of the process: 1, or 0 if that fails.
VASTRA_API int SetCurrentDirectory(const CString& directory);

// directory + "/" + name, or name alone if directory is empty.
VASTRA_API CString JoinPath(const CString& directory, const CString& name);
// What stands before the last "/" of path: "." without one, "/" for a file of the root.
VASTRA_API CString DirectoryOf(const CString& path);
// Makes the entries of directory durable; a file system that cannot is left alone.
VASTRA_API void SyncDirectory(const CString& directory);

}  // namespace vastra
