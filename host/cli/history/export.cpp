#include "host/cli/history/export.h"

#include <set>

#include "host/cli/history/export_output.h"
#include "host/cli/history/history_paths.h"
#include "host/cli/history/sqlite_table.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/column_names.h"
#include "host/run/inbox.h"
#include "vastra/history/folder_digest.h"

namespace vastra {
namespace {

// Tells the faults of logs. Returns kFailed if no log can be read or an argument is bad.
EExit TellFaults(const CExportOrder& order, const CHistoryPaths& paths, bool& isAnyGood) {
  EExit status = kDone;
  isAnyGood = false;
  for (const CHistoryLog& log : paths.Logs()) {
    if (log.fault.IsEmpty())
      isAnyGood = true;
    else if (paths.IsArgument(log.path))
      status = Fail(kFailed, paths.Shown(log.path), log.fault);
    else
      Warn(paths.Shown(log.path), log.fault);
  }
  if (paths.Logs().empty()) return Fail(kFailed, order.paths.front().typed, "has no logs");
  return isAnyGood ? status : kFailed;
}

// The variables of all logs, also of those without rows.
std::vector<CString> AllNames(const std::vector<CHistoryLog>& logs) {
  std::set<const std::vector<CString>*> lists;
  std::vector<CString> names;
  for (const CHistoryLog& log : logs)
    if (log.names && lists.insert(log.names.get()).second)
      names.insert(names.end(), log.names->begin(), log.names->end());
  return names;
}

std::vector<CString> NameColumns(const CExportOrder& order, const std::vector<CString>& names) {
  constexpr EColumnNames kKinds[] = {EColumnNames::bytes, EColumnNames::utf8, EColumnNames::caseless};
  if (order.format == EExportFormat::sqlite && names.size() > CSqliteTable::kMostNames)
    throw CExportStop{"not written: a table of SQLite has at most 1999 variables, not " +
                      CString(std::to_string(names.size())) + " (--vars chooses some)"};
  std::vector<CString> changed;
  std::vector<CString> columns = TableNames(names, kKinds[static_cast<int>(order.format)], changed);
  for (const CString& line : changed) Warn("convert", line);
  return columns;
}

void MakeDigests(const CExportOrder& order, const std::vector<CHistoryLog>& logs) {
  const CExportWatch watch = WatchExport(order, "digests");
  const std::vector<CString> faults =
      UpdateDigests(logs, [&watch](double part) { return watch(part), true; });
  for (const CString& fault : faults) Warn("convert", fault);
}

EExit WriteRows(const CExportOrder& order, const CHistoryPaths& paths) {
  CExportResult result;
  const EExit status = WriteExport(order, [&](CRowTable& table) {
    if (order.makesDigests) MakeDigests(order, paths.Logs());
    result = ExportRows(
        paths.Logs(), order.request, [&](const auto& names) { return NameColumns(order, names); }, table,
        WatchExport(order, "converted"));
  });
  for (const CHistoryFault& fault : result.faults) Warn(paths.Shown(fault.path), fault.fault);
  if (status == kDone && result.rows == 0) Warn("convert", "there are no rows in this range");
  return status;
}

EExit ExportLogs(const CExportOrder& order) {
  const CHistoryPaths paths(order.paths, order.isRecursive);
  if (order.out && paths.HasFile(order.out->path))
    return Fail(kWrongUse, order.out->typed, "not written: it is a log to convert");
  bool isAnyGood;
  const EExit found = TellFaults(order, paths, isAnyGood);
  if (!isAnyGood) return found;
  const CString unknown = UnknownName(order.request.variables, AllNames(paths.Logs()));
  if (!unknown.IsEmpty()) return Fail(kWrongUse, "convert", "--vars: " + unknown);
  const EExit written = WriteRows(order, paths);
  return written == kDone ? found : written;
}

}  // namespace

// To standard output a signal ends the command by its default action, also while a reader of the pipe waits.
EExit Export(const CExportOrder& order) {
  if (!order.out) return ExportLogs(order);
  CInbox inbox;
  const CStopSignals signals(inbox);
  return ExportLogs(order);
}

}  // namespace vastra
