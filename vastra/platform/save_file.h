// Files that a program writes for its user.
#pragma once

#include <functional>

#include "vastra/platform/file.h"

namespace vastra {

// Lets write fill the file at path, or leaves what was there exactly as it was: the new file is written
// beside the old one, synced and renamed over it. What is no regular file, such as a pipe, is written as it
// stands. Throws CFileException.
VASTRA_API void SaveFile(const CString& path, const std::function<void(CFile&)>& write);

}  // namespace vastra
