// A session: one run of a configuration, from the checks before the stages open to the files that were
// written. run and demo are built on it.
#pragma once

#include "host/cli/console.h"
#include "host/cli/exit.h"
#include "host/common/scan_loop.h"
#include "host/common/stage_names.h"

namespace vastra {

// What the options of commands may say.
constexpr std::int64_t kMostScans = INT64_MAX;
constexpr std::int64_t kLongestPeriod = UINT32_MAX;  // milliseconds

struct CSessionOptions {
  bool threaded = false;
  std::int64_t scans = -1;       // below 0: no limit
  CScanLoop::Period period{-1};  // below 0: the configuration's
  EVerbosity verbosity = EVerbosity::normal;
  UINT node = 0;  // number of this computer on the net of PLCs
};

// What the user sees of a run while it lasts.
class CSessionView {
 public:
  virtual ~CSessionView() = default;
  // Called before the stages open, with the names of the trending stage's samples; not called where they
  // cannot be had, and the input stage will tell why. Anything but kDone, told, and there is no run.
  virtual EExit Begin(const CStringArray&) { return kDone; }
  // Called at the end of each scan that read a sample.
  virtual void Refresh(CLogTrendings&) {}
  // Called between the steps of loop. Gives the time at which it wants to be called again even if nothing
  // happens before; the end of time if it has shown everything.
  virtual CScanLoop::Time Show(const CScanLoop& loop) = 0;
  // Called when the run is over and its stages are closed. Anything but kDone, told, is the result of the
  // run.
  virtual EExit End() { return kDone; }
};

struct CSessionResult {
  CScanCounts counts;
  std::vector<std::string> files;  // written and still there, full paths in byte order
};

// Tells in one line of each equation list that does not compile. subject is what the lines call the
// configuration. kDone, or kRefused.
EExit TellEquationFaults(const CString& subject, const CConfiguration& configuration,
                         const CStageNames& names);
// Tells of what may not be wanted.
void TellWarnings(const CString& subject, const CConfiguration& configuration, const CStageNames& names);

// Runs configuration until its end or a signal. kDone, with result; kRefused; kFailed if a stage did not
// open; or what view gives. What is wrong has been told.
EExit RunSession(const CString& subject, const CConfiguration& configuration, const CSessionOptions& options,
                 CSessionView& view, CSessionResult& result);

// The counts in words.
CString ToText(const CSessionResult& result);

}  // namespace vastra
