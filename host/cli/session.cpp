#include "host/cli/session.h"

#include "host/cli/number_text.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/inbox.h"

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

void PrintWarnings(const CString& subject, const std::vector<CFinding>& findings) {
  for (const CString& line : LinesOf(findings, false)) Warn(subject, line);
}

EExit PrintRefusals(const CString& subject, const std::vector<CFinding>& findings,
                    const std::vector<CEquationFinding>& faults) {
  EExit status = kDone;
  for (const CString& line : LinesOf(findings, true)) status = Fail(kRefused, subject, line);
  for (const CEquationFinding& fault : faults) {
    status = Fail(kRefused, subject, fault.message);
    PrintPlace(fault.statement, fault.offset);
  }
  return status;
}

EExit PrintBadLogs(const CString& subject, const std::vector<CString>& lines, bool isStrict) {
  for (const CString& line : lines)
    isStrict ? void(Fail(kFailed, subject, line)) : Warn(subject, line + ": the log is left out");
  return isStrict && !lines.empty() ? kFailed : kDone;
}

void PrintReadOnly(const CString& subject, const CConfiguration& configuration, const CLoopOptions& options) {
  if (LeavesOutWriting(configuration, options))
    CTerminal::Instance().Remark("vastra: " + subject +
                                 ": plcWrite: a replay writes to no PLC; --write-plc writes");
}

EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result) {
  const bool isPlain = !options.loop.policy;
  CHostConsole console(options.verbosity, isPlain);
  CInbox inbox;
  CRunOptions runOptions = {options.loop};
  runOptions.target = &inbox;
  runOptions.stopAsked = CStopSignals::HaveCome;
  runOptions.reports = options.reports && !isPlain;
  runOptions.folders = options.folders;
  CRun run(configuration, console.Messenger(), runOptions);
  const std::vector<CFinding> findings = run.Findings();
  PrintWarnings(subject, findings);
  if (PrintBadLogs(subject, run.BadLogs(), options.isStrict) != kDone) return kFailed;
  if (PrintRefusals(subject, findings, run.EquationFaults()) != kDone) return kRefused;
  if (run.Names().hasInput) {
    const EExit status = view.Begin(run.SampleNames());
    if (status != kDone) return status;
  }

  PrintReadOnly(subject, configuration, options.loop);

  const CStopSignals stops(inbox);
  run.AddObserver(&view);
  // A signal while the stages open, a driver among them, ends a run without a scan.
  if (!run.Start() && !CStopSignals::HaveCome()) return Fail(kFailed, subject, run.OpenFault());
  DriveToEnd(run, inbox, [&view] { return view.Show(); });
  result = {run.Counts().scans, run.Files(), run.Ledger()};
  return view.End();
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
