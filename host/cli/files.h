// Checks of the files that a user names, before they are opened.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// What is at path if that is not a regular file, such as "a folder" or "a FIFO", which would make a reader
// wait. Empty for a regular file.
CString OtherThanFile(const CString& path);

// Whether two paths lead to the same file that exists, by links too.
bool IsSameFile(const CString& first, const CString& second);

}  // namespace vastra
