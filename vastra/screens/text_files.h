// Import and export of text files for the list dialogs and the equation editor: asks for the path, reads or
// writes the file, and tells the user if that fails.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// 1. Or 0: the user cancelled, or the file failed and the user was told. title: of the message box; empty:
// the program's name.
int ImportText(const CString& title, CString& text);
int ExportText(const CString& title, const CString& text);

}  // namespace vastra
