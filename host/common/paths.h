// Paths that a user has typed, on a command line or in a configuration.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// A relative path, taken from folder and without "." parts; ".." takes the part before it away unless that is
// a symbolic link. An empty path and an absolute one come back as they are.
CString MakeAbsolute(const CString& folder, const CString& path);
// The same, taken from the current directory of the process.
CString MakeAbsolute(const CString& path);

}  // namespace vastra
