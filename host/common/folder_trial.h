// Whether logs can be written to a folder, tried by making a file in it.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

struct CFolderTrial {
  int error = 0;        // of the system; 0: a file was made and removed
  bool isFull = false;  // the file system has no room, which can pass
};

// With makes a folder that is missing is made first, and those above it.
CFolderTrial TryFolder(const CString& folder, bool makes);

}  // namespace vastra
