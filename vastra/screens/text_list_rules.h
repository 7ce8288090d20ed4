// Text lists, which the list dialogs and the equation editor import and export. Each line is an entry;
// reading stops at an empty line.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

// The lines of text, without line ends ("\n" or "\r\n"), up to the first empty one.
CStringArray LinesOf(const CString& text);
// The lines, each followed by "\r\n".
CString JoinLines(const CStringArray& lines);
// The content of a file with names: a line for each name and an empty line.
CString ListText(const CStringArray& names);

bool HasRepeats(const CStringArray& names);
// The names that are not in present, in order.
CStringArray MissingFrom(const CStringArray& present, const CStringArray& names);

// False: path is not a readable regular file, or the file is longer than kMaxTextFile.
bool ReadTextFile(const CString& path, CString& text);
// Writes text to a new file and renames it to path, or to the target of path if path is a link. False: it
// could not be written, and an existing file is unchanged.
bool WriteTextFile(const CString& path, const CString& text);

constexpr std::size_t kMaxTextFile = 4 << 20;  // bytes

}  // namespace vastra
