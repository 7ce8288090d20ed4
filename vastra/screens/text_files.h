// Import and export of text files: the question for the file, the reading or writing, the box if that fails.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// 1, or 0 if the user gave up or the file failed and the user was told. title: of that box; empty: the
// program's name.
int ImportText(const CString& title, CString& text);
int ExportText(const CString& title, const CString& text);

}  // namespace vastra
