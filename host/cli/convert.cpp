// vastra convert: a binary log as the CSV copy that the logger itself writes.
#include "host/cli/command.h"
#include "host/cli/output.h"
#include "host/cli/terminal.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

EExit Convert(const CFileArgument& log, const std::optional<CFileArgument>& csv) {
  CSampleStore samples;
  CLogReader reader(samples);
  if (!reader.Open(log.path) || !reader.ReadSamples()) return Fail(kFailed, log.typed, reader.GetFault());
  CStringArray names;
  reader.GetNames(names);
  const auto write = [&](CFile& file) {
    CCsvText text;
    WriteCsv(file, names, samples, text);
  };
  if (!csv) return PrintData(write);
  try {
    SaveFile(csv->path, write);
    return kDone;
  } catch (const CFileException& fault) {
    return Fail(kFailed, csv->typed, fault.Text());
  }
}

}  // namespace

CAction DeclareConvert(CArguments& arguments) {
  const auto log = arguments.File("LOG", "The binary log, .rph or .rpd");
  const auto csv = arguments.OptionalFile("--csv", "OUT", "Write this file instead of standard output");
  return [=] { return Convert(*log, *csv); };
}

}  // namespace vastra
