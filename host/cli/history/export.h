// Export: what convert does with ranges, steps, folders and several logs.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/exit.h"
#include "vastra/history/export_rows.h"
#include "vastra/history/moment_text.h"

namespace vastra {

enum class EExportFormat { csv, jsonl, sqlite };

struct CExportOrder {
  std::vector<CFileArgument> paths;
  bool isRecursive = false;
  CExportRequest request;
  EExportFormat format = EExportFormat::csv;
  ETimeForm time = ETimeForm::local;
  std::optional<CFileArgument> out;  // empty: standard output, which sqlite cannot use
  bool mayReplace = false;           // a database
  bool makesDigests = false;         // before buckets are read
};

// Returns kDone, also if damaged logs were left out, with a warning; kFailed if there was nothing to read, a
// log that was named is bad, or the output cannot be written: then a file has its old content; kWrongUse if
// the output is one of the logs or a variable is in none of them.
EExit Export(const CExportOrder& order);

}  // namespace vastra
