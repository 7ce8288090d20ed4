#include "host/cli/session.h"

#include <algorithm>

#include "host/cli/number_text.h"
#include "host/cli/terminal/terminal.h"
#include "vastra/platform/file_system.h"

namespace vastra {
namespace {

// The counts in words; the rows that are lost come first.
CString ToText(const CSessionResult& result) {
  const CScanCounts& counts = result.counts;
  const CString loss = LossText(result.ledger);
  std::string text = (loss.IsEmpty() ? "" : loss.Std() + ", ") + std::to_string(counts.read) + " read, " +
                     Counted(counts.failedReads, "failed read") + ", " + std::to_string(counts.late) +
                     " late, " + Counted(counts.failedWrites.Sum(), "failed write") + ", " +
                     Counted(result.files.size(), "file") + " written";
  if (const std::uint64_t rows = Sum(result.ledger).inJournal)
    text += ", " + Counted(rows, "row") + " in a journal only: the next run makes a log of " +
            (rows == 1 ? "it" : "them");
  return CString(text);
}

}  // namespace

void CSessionResult::Add(const CRun& run) {
  counts += run.Counts().scans;
  std::ranges::copy(run.Files(), std::back_inserter(files));
  std::ranges::sort(files);
  files.erase(std::unique(files.begin(), files.end()), files.end());
  std::erase_if(files, [](const std::string& path) { return !FileExists(CString(path)); });
  Merge(ledger, run.Ledger());
}

void PrintWarnings(const CString& subject, const std::vector<CFinding>& findings) {
  for (const CString& line : LinesOf(findings, false)) Warn(subject, line);
}

EExit PrintRefusals(const CString& subject, const std::vector<CFinding>& findings,
                    const std::vector<CEquationFinding>& faults) {
  EExit status = kDone;
  for (const CString& line : LinesOf(findings, true)) status = Fail(kRefused, subject, line);
  for (const CEquationFinding& fault : faults) {
    status = Fail(kRefused, subject, fault.Line());
    PrintPlace(fault.statement, fault.offset);
  }
  return status;
}

EExit PrintBadLogs(const CString& subject, const std::vector<CString>& lines, bool isStrict) {
  for (const CString& line : lines)
    isStrict ? void(Fail(kFailed, subject, line)) : Warn(subject, line + ": the log is left out");
  return isStrict && !lines.empty() ? kFailed : kDone;
}

EExit PrintVerdict(const CString& subject, const std::vector<CFinding>& findings,
                   const std::vector<CString>& badLogs, const std::vector<CEquationFinding>& faults,
                   bool isStrict) {
  PrintWarnings(subject, findings);
  const EExit status = PrintBadLogs(subject, badLogs, isStrict);
  return status == kDone ? PrintRefusals(subject, findings, faults) : status;
}

void PrintReadOnly(const CString& subject, const CConfiguration& configuration, const CLoopOptions& options) {
  if (LeavesOutWriting(configuration, options))
    CTerminal::Instance().Remark("vastra: " + subject +
                                 ": plcWrite: a replay writes to no PLC; --write-plc writes");
}

EExit PrintEnd(const CSessionResult& result) {
  const CString line = "vastra: " + ToText(result);
  if (result.HasLeftRows())
    CTerminal::Instance().Line(line, result.Status() == kDone ? kPlain : kErrorColour);
  else
    CTerminal::Instance().Remark(line);
  return result.Status();
}

}  // namespace vastra
