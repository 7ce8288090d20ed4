// Saves a log, binary or text: in place if no file of its name exists, otherwise as a complete new image that
// replaces the old one.
#pragma once

#include <functional>

#include "vastra/platform/file.h"

namespace vastra {

// Why a log could not be saved.
struct CSaveFailure {
  CString reason;              // the system's error message
  bool leftShortFile = false;  // a new file stays on the disk, with a part of the log
};

// Writes the log at path; write fills the file. 1, or 0 if any step failed: an existing file is unchanged
// then, and a new file stays with the part that reached the disk. durable: the log and its name are on the
// disk when this returns; for a log that replaces another this is always so. On 0 failure, if not null, gets
// the reason.
int SaveLogFile(const CString& path, bool durable, const std::function<void(CFile&)>& write,
                CSaveFailure* failure = nullptr);

// Removes from directory the unfinished images of logs with extension that a killed process left, but not
// those that another process is writing.
void RemoveLeftImages(const CString& directory, const CString& extension);

}  // namespace vastra
