// A session: one run of a configuration in the terminal, from the checks before the stages open to the files
// that were written. run, watch and demo are built on it.
#pragma once

#include "host/cli/console.h"
#include "host/cli/exit.h"
#include "host/run/feed.h"
#include "host/run/run.h"

namespace vastra {

// Bounds of the options of commands.
constexpr std::int64_t kMostScans = INT64_MAX;
constexpr std::int64_t kLongestPeriod = UINT32_MAX;  // milliseconds

struct CSessionOptions {
  CLoopOptions loop;  // without a target
  EVerbosity verbosity = EVerbosity::normal;
  bool reports = true;    // of a healthy run, unless --plain is given
  bool isStrict = false;  // a replay with a bad log in its list does not start
  EFolders folders = EFolders::attempt;
  bool retries = false;  // waits for what can come: a device, a folder, a driver module, a log to replay
  // Of a service, which notifies its manager: reads the configuration again when SIGHUP has come. kDone, or
  // another status after an error message. Null: no service.
  std::function<EExit(CConfiguration&)> load = nullptr;
  CFeed* feed = nullptr;  // where other programs follow the run; null: nowhere
};

// What the user sees during a run.
class CSessionView : public CRunObserver {
 public:
  // Called before the stages open, with the names of the samples; not called if they cannot be worked out:
  // the input stage will report the reason. Anything but kDone, reported by the view, ends the session.
  virtual EExit Begin(const CStringArray&) { return kDone; }
  // Called between the steps of the run. Returns the time at which the view wants to be called again even if
  // nothing happens before; the end of time if it has shown everything.
  virtual CScanLoop::Time Show() = 0;
  // Called when the run is over and its stages are closed. Anything but kDone, reported by the view, is the
  // result of the session.
  virtual EExit End() { return kDone; }
};

// Of one run, or of several in turn where a reload has ended one.
struct CSessionResult {
  CScanCounts counts;
  std::vector<std::string> files;  // written and still existing, absolute paths in byte order
  std::vector<CRunLedger> ledger;
  bool hasFailed = false;  // the last run has ended because its stages did not open again

  void Add(const CRun& run);  // that has ended

  // Whether a row is not in a log at the end.
  bool HasLeftRows() const { return Sum(ledger).lost || Sum(ledger).inJournal; }
  // Of the command: kFailed also if rows are lost.
  EExit Status() const { return hasFailed || Sum(ledger).lost ? kFailed : kDone; }
};

// Prints the findings that are warnings.
void PrintWarnings(const CString& subject, const std::vector<CFinding>& findings);
// Prints why a configuration is refused: the findings that are not warnings, and each equation list that does
// not compile, with a caret under the place of the fault. kDone without faults, else kRefused.
EExit PrintRefusals(const CString& subject, const std::vector<CFinding>& findings,
                    const std::vector<CEquationFinding>& faults);
// Prints the bad logs of a replay: as warnings, or as errors with the result kFailed if isStrict.
EExit PrintBadLogs(const CString& subject, const std::vector<CString>& lines, bool isStrict);

// Prints all of these. kDone if a run can start, else their status.
EExit PrintVerdict(const CString& subject, const std::vector<CFinding>& findings,
                   const std::vector<CString>& badLogs, const std::vector<CEquationFinding>& faults,
                   bool isStrict);

// Says, if it is so, that a replay writes to no PLC.
void PrintReadOnly(const CString& subject, const CConfiguration& configuration, const CLoopOptions& options);

// Runs configuration until its end or a signal. kDone, with result; kRefused; kFailed if a stage did not
// open; or the result of view. Errors have been printed.
EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result);

// Prints the counts as the last line of a command, and first in it the rows that are lost. With --quiet only
// if rows are lost or in a journal only. Returns the status.
EExit PrintEnd(const CSessionResult& result);

}  // namespace vastra
