#include "host/cli/read_log.h"

#include "host/cli/number_text.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/paths.h"
#include "vastra/logfiles/journal_reader.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

CString ReadJournalAsLog(const CFileArgument& file, CStringArray& names, CSampleStore& samples) {
  CJournalContent journal;
  if (!ReadJournal(file.path, journal, samples)) return journal.fault;
  names = journal.head.varNames;
  const auto torn = static_cast<std::size_t>(journal.tornBytes);
  if (torn) Warn(file.typed, "ends in " + CString(Counted(torn, "byte")) + " that are not a whole record");
  return {};
}

}  // namespace

CString ReadLog(const CFileArgument& file, CStringArray& names, CSampleStore& samples) {
  const CString other = OtherThanFile(file.path);
  if (!other.IsEmpty() && FileExists(file.path)) return "is " + other + ", not a log";
  if (IsJournal(file.path)) return ReadJournalAsLog(file, names, samples);
  CLogReader reader(samples);
  if (!reader.Open(file.path) || !reader.ReadSamples()) return reader.GetFault();
  reader.GetNames(names);
  return {};
}

}  // namespace vastra
