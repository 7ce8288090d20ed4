// How a log gets onto the disk, binary or text: in place where no file of its name exists, otherwise as a
// whole new image that takes the place of the old one.
#pragma once

#include <functional>

#include "vastra/platform/file.h"

namespace vastra {

// Why a log could not be saved.
struct CSaveFailure {
  CString reason;              // the system's words
  bool leftShortFile = false;  // a new file stays on the disk, with a part of the log
};

// Writes the log at path, by a call of write on the file that is to hold it. 1, or 0 if any of it failed;
// then the file that was there is untouched, or there was none and what reached the disk is left as a short
// file. durable: the log is on the disk, with its name, when this returns; a log that replaces another always
// is. failure, if there is one, gets the reason for a 0.
int SaveLogFile(const CString& path, bool durable, const std::function<void(CFile&)>& write,
                CSaveFailure* failure = nullptr);

// Removes from directory the new images of logs with extension that a killed process left; not those that
// another process is writing.
void RemoveLeftImages(const CString& directory, const CString& extension);

}  // namespace vastra
