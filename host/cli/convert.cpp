// vastra convert: a binary log or a journal as the CSV copy that the logger itself writes.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/output.h"
#include "host/cli/read_log.h"
#include "host/cli/terminal/terminal.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

EExit Convert(const CFileArgument& log, const std::optional<CFileArgument>& csv) {
  if (csv && IsSameFile(log.path, csv->path))
    return Fail(kWrongUse, csv->typed, "not written: it is the log to convert");
  CStringArray names;
  CSampleStore samples;
  const CString fault = ReadLog(log, names, samples);
  if (!fault.IsEmpty()) return Fail(kFailed, log.typed, fault);
  const auto write = [&](CFile& file) {
    CCsvText text;
    WriteCsv(file, names, samples, text);
  };
  if (!csv) return PrintData(write);
  try {
    SaveFile(csv->path, write);
    return kDone;
  } catch (const CFileException& exception) {
    return Fail(kFailed, csv->typed, exception.Text());
  }
}

}  // namespace

CAction DeclareConvert(CArguments& arguments) {
  const auto log = arguments.File("LOG", "The binary log, .rph or .rpd, or a journal");
  const auto csv = arguments.OptionalFile("--csv", "OUT", "Write this file instead of standard output");
  return [=] { return Convert(*log, *csv); };
}

}  // namespace vastra
