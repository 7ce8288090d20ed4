// Where an export goes: a file, which appears whole or not at all, or standard output.
#pragma once

#include <functional>

#include "host/cli/history/export.h"

namespace vastra {

// Calls fill with the empty table that order asks for. Returns kDone, or kFailed after an error message: the
// output cannot be written, a signal has come while a file was written, or fill has thrown CExportStop.
EExit WriteExport(const CExportOrder& order, const std::function<void(CRowTable&)>& fill);

// Why an export ends before its end.
struct CExportStop {
  CString reason;
};

// What an export shows and asks meanwhile: a bar on a terminal, unless the rows themselves go there, and
// whether a signal asks for the end. Throws CExportStop then.
CExportWatch WatchExport(const CExportOrder& order, const char* work);

}  // namespace vastra
