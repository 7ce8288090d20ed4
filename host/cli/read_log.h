// How inspect and convert read a log or a journal.
#pragma once

#include "host/cli/arguments.h"
#include "vastra/logfiles/sample_store.h"
#include "vastra/platform/array.h"

namespace vastra {

// Reads the log, or the whole records of the journal, into names and samples. Returns an error message
// without the name of the file; empty if the file was read. Warns of a journal that ends in an incomplete
// record.
CString ReadLog(const CFileArgument& file, CStringArray& names, CSampleStore& samples);

}  // namespace vastra
