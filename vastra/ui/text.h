// Converts the 8-bit strings of the engine to text of the screen and back.
//
// Strings are UTF-8. A string that is not UTF-8, for example from an old file, is shown as Latin-1. Typed
// text becomes UTF-8.
#pragma once

#include "vastra/platform/string.h"

class QString;

namespace vastra {

VASTRA_API QString ToScreen(const CString& text);
VASTRA_API CString FromScreen(const QString& text);

// The same for several lines: "\r\n" and "\r" become "\n".
VASTRA_API QString ToScreenLines(const CString& text);
// Back: each "\n" becomes "\r\n".
VASTRA_API CString FromScreenLines(const QString& text);

// The position in ToScreenLines(text) of the byte at offset, from 0 to the length of text. A byte inside a
// character has the position of the character.
VASTRA_API int ScreenPlace(const CString& text, int offset);

}  // namespace vastra
