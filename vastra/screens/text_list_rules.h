// Text lists: what the list dialogs and the equation editor import and export. One entry to a line; an empty
// line ends what is read.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

// The lines of text, without their ends ("\n" or "\r\n"), up to the first empty one.
CStringArray LinesOf(const CString& text);
// Each line with "\r\n" behind it.
CString JoinLines(const CStringArray& lines);
// A list of names as a file has it: its lines and an empty one.
CString ListText(const CStringArray& names);

bool HasRepeats(const CStringArray& names);
// Those of names that are not in present, in order.
CStringArray MissingFrom(const CStringArray& present, const CStringArray& names);

// False: path is no file that can be read, or it is longer than any list is.
bool ReadTextFile(const CString& path, CString& text);
// Writes text beside path, the target if path is a link, and then in its place. False: it could not be
// written, and what was there stays.
bool WriteTextFile(const CString& path, const CString& text);

constexpr std::size_t kMaxTextFile = 4 << 20;  // bytes

}  // namespace vastra
