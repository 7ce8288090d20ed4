// IsWholeLog: distinguishes a log that is whole from a short, empty or foreign file of its name. The rotation
// of logs (log_rotation.h) asks it. FindExcess: a look at a large file before a reader takes memory for it.
#pragma once

#include "vastra/logfiles/log_naming.h"

namespace vastra {

// Whether the file at path is a regular file, not a link, and whole. Binary: the head, the counts and the
// trailer fit the size of the file; where all samples have a value for each name, only the head and the end
// are read. Text: the file is not empty and ends in a line feed. False if the file cannot be read.
bool IsWholeLog(const CString& path, ELogForm form);

// Why a file of this size is not read as a binary log, although it may begin with one: its counts do not need
// so many bytes, or most of it is a hole. Empty for a file of less than 16 MB, and for one that is read.
CString FindExcess(const CString& path, std::uint64_t size);

}  // namespace vastra
