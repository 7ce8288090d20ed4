#include "host/cli/session.h"

#include "host/cli/number_text.h"
#include "host/cli/terminal/terminal.h"
#include "host/run/inbox.h"

namespace vastra {

void PrintWarnings(const CString& subject, const std::vector<CString>& warnings) {
  for (const CString& warning : warnings) Warn(subject, warning);
}

EExit PrintEquationFaults(const CString& subject, const std::vector<CEquationFinding>& faults) {
  for (const CEquationFinding& fault : faults) {
    Fail(kRefused, subject, fault.message);
    PrintPlace(fault.statement, fault.offset);
  }
  return faults.empty() ? kDone : kRefused;
}

EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result) {
  CHostConsole console(options.verbosity);
  CInbox inbox;
  CRunOptions runOptions = {options.loop};
  runOptions.target = &inbox;
  CRun run(configuration, console.Messenger(), runOptions);
  PrintWarnings(subject, run.Warnings());
  if (PrintEquationFaults(subject, run.EquationFaults()) != kDone) return kRefused;
  if (run.Names().hasInput) {
    const EExit status = view.Begin(run.SampleNames());
    if (status != kDone) return status;
  }

  const CStopSignals stops(inbox);
  run.AddObserver(&view);
  if (!run.Start()) return Fail(kFailed, subject, run.OpenFault());
  DriveToEnd(run, inbox, [&view] { return view.Show(); });
  result = {run.Counts().scans, run.Files()};
  return view.End();
}

CString ToText(const CSessionResult& result) {
  const CScanCounts& counts = result.counts;
  return CString(std::to_string(counts.read) + " read, " + Counted(counts.failedReads, "failed read") + ", " +
                 std::to_string(counts.late) + " late, " +
                 Counted(counts.failedWrites.Sum(), "failed write") + ", " +
                 Counted(result.files.size(), "file") + " written");
}

}  // namespace vastra
