#include "host/cli/session.h"

#include <algorithm>

#include "host/cli/inbox.h"
#include "host/cli/number_text.h"
#include "host/cli/terminal/terminal.h"
#include "host/cli/written_files.h"
#include "host/common/equation_check.h"
#include "host/common/log_places.h"
#include "host/common/warnings.h"

namespace vastra {
namespace {

std::vector<CString> LogDirectories(const CConfiguration& configuration) {
  std::vector<CString> directories;
  for (const CLogPlace& place : FindLogPlaces(configuration)) directories.push_back(place.directory);
  return directories;
}

void Take(CScanLoop& loop, const CMessage& message) {
  if (message.m_message == CStopSignals::messageStop)
    loop.Stop();
  else
    loop.Notify(message.m_message, message.m_wparam);
}

// Drives loop to its end.
void Follow(CScanLoop& loop, CInbox& inbox, CSessionView& view) {
  while (loop.IsRunning()) {
    const CInbox::Time due = loop.IsPending() ? CInbox::Time::max() : loop.NextDue();
    const CInbox::Time redraw = view.Show(loop);
    CMessage message;
    if (inbox.Wait(message, std::min(due, redraw)))
      Take(loop, message);
    else if (due <= redraw)
      loop.Step();
  }
}

EExit FailOpen(const CString& subject, const CScanLoop& loop, const CConfiguration& configuration) {
  const CString stage = loop.FailedStage();
  const CString why = stage == "input"      ? ExplainSilence(configuration.m_input)
                      : stage == "plcWrite" ? ExplainSilence(configuration.m_plcWrite)
                                            : CString();
  return Fail(kFailed, subject,
              stage + ": the stage does not open" + (why.IsEmpty() ? why : ", since " + why));
}

}  // namespace

EExit TellEquationFaults(const CString& subject, const CConfiguration& configuration,
                         const CStageNames& names) {
  const std::vector<CString> faults = FindEquationFaults(configuration, names);
  for (const CString& fault : faults) Fail(kRefused, subject, fault);
  return faults.empty() ? kDone : kRefused;
}

void TellWarnings(const CString& subject, const CConfiguration& configuration, const CStageNames& names) {
  for (const CString& warning : FindWarnings(configuration, names)) Warn(subject, warning);
}

EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result) {
  CHostConsole console(options.verbosity);
  console.ShowNothing();  // what fails here fails again, and is shown, when the stages open
  const CStageNames names = FindStageNames(configuration);
  console.Show(options.verbosity);
  TellWarnings(subject, configuration, names);
  if (TellEquationFaults(subject, configuration, names) != kDone) return kRefused;
  if (names.hasInput) {
    const EExit status = view.Begin(TrendNames(configuration, names));
    if (status != kDone) return status;
  }

  const CWrittenFiles written(LogDirectories(configuration));
  CInbox inbox;
  const CStopSignals stops(inbox);
  CScanLoop loop(configuration, {.threaded = options.threaded,
                                 .scans = options.scans,
                                 .period = options.period,
                                 .target = &inbox,
                                 .node = options.node,
                                 .refresh = [&view](CLogTrendings& trend) { view.Refresh(trend); }});
  if (!loop.Start()) return FailOpen(subject, loop, configuration);
  Follow(loop, inbox, view);
  result = {loop.Counts(), written.Changed()};
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
