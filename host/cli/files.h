// Checks of the files that a user names, before they are opened.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Whether two paths lead to the same file that exists, by links too.
bool IsSameFile(const CString& first, const CString& second);

}  // namespace vastra
