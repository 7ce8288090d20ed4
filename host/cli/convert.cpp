// vastra convert: a binary log or a journal as the CSV copy that the logger itself writes, or the rows of
// logs and folders by time, as CSV, lines of JSON or a database.
#include "host/cli/command.h"
#include "host/cli/files.h"
#include "host/cli/history/export_arguments.h"
#include "host/cli/output.h"
#include "host/cli/read_log.h"
#include "host/cli/terminal/terminal.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

EExit ConvertWhole(const CFileArgument& log, const std::optional<CFileArgument>& csv) {
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

EExit Convert(const CExportArguments& arguments) {
  if (arguments.IsPlain()) return ConvertWhole(arguments.Paths().front(), arguments.Csv());
  CExportOrder order;
  const EExit status = arguments.Read(order);
  return status == kDone ? Export(order) : status;
}

}  // namespace

CAction DeclareConvert(CArguments& arguments) {
  return [given = CExportArguments(arguments)] { return Convert(given); };
}

}  // namespace vastra
