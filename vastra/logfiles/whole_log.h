// IsWholeLog: distinguishes a log that is whole from a short, empty or foreign file of its name. The rotation
// of logs (log_rotation.h) asks it.
#pragma once

#include "vastra/logfiles/log_naming.h"

namespace vastra {

// Whether the file at path is a regular file, not a link, and whole. Binary: the head, the counts and the
// trailer fit the size of the file; where all samples have a value for each name, only the head and the end
// are read. Text: the file is not empty and ends in a line feed. False if the file cannot be read.
bool IsWholeLog(const CString& path, ELogForm form);

}  // namespace vastra
