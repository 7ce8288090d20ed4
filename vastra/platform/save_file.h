// SaveFile: writes a file for the user, whole or not at all.
#pragma once

#include <functional>

#include "vastra/platform/file.h"

namespace vastra {

// Calls write to fill the file at path. The new file is written beside the old one, synced and renamed over
// it; on failure the old file does not change. Follows a symbolic link. A file that is not a regular file,
// such as a pipe, is written directly. Throws CFileException, and whatever write throws.
VASTRA_API void SaveFile(const CString& path, const std::function<void(CFile&)>& write);

}  // namespace vastra
