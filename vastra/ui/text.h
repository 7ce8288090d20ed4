// Between the 8-bit text of the engine and the text of the screen.
//
// A text is UTF-8. One that is not (an old file may hold it) is shown as Latin-1. What is typed becomes
// UTF-8.
#pragma once

#include "vastra/platform/string.h"

class QString;

namespace vastra {

VASTRA_API QString ToScreen(const CString& text);
VASTRA_API CString FromScreen(const QString& text);

// A text with lines as a widget holds it: "\r\n" and "\r" become "\n".
VASTRA_API QString ToScreenLines(const CString& text);
// Back: each "\n" becomes "\r\n".
VASTRA_API CString FromScreenLines(const QString& text);

// The place in ToScreenLines(text) of the byte at offset of text, which is up to its length. Bytes inside a
// character belong to its beginning.
VASTRA_API int ScreenPlace(const CString& text, int offset);

}  // namespace vastra
