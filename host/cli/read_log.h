// How inspect and convert read a log.
#pragma once

#include "host/cli/arguments.h"
#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/array.h"

namespace vastra {

// Reads the log into names and samples. Returns an error message without the name of the file; empty if all
// was read.
CString ReadLog(const CFileArgument& file, CStringArray& names, CSampleStore& samples);

}  // namespace vastra
