// Paths that a user has typed, on a command line or in a configuration.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Makes a relative path absolute, relative to folder, and removes "." parts. ".." removes the part before it,
// unless that is a symbolic link. An empty or absolute path is returned unchanged.
CString MakeAbsolute(const CString& folder, const CString& path);
// The same, relative to the current directory of the process.
CString MakeAbsolute(const CString& path);

// What is at path if that is not a regular file, such as "a folder" or "a FIFO", which would make a reader
// wait. Empty for a regular file.
CString OtherThanFile(const CString& path);

}  // namespace vastra
