// CRunObserver: receives the events of a run, for a progress line, a table of values or a window. The run
// calls its observers in the order in which they were added, on the thread that drives it at that moment.
// Only Message can come on another thread, that of a worker, and at the same time as other calls.
#pragma once

#include "host/common/message_text.h"
#include "host/common/scan_loop.h"
#include "host/run/run_ledger.h"
#include "vastra/logfiles/log_listener.h"

namespace vastra {

// The results of a run so far.
struct CRunCounts {
  CScanCounts scans;
  CFill fill;        // of the outputs: samples in memory only, and those of full logs
  CLedgerSums kept;  // of the accounts; updated a few times a second
  struct {
    UINT logs = 0;   // in the list; 0: live input
    UINT done = 0;   // logs that have been played
    float part = 0;  // of the whole list, 0.0 to 1.0
  } replay;
};

// The output or summary that a log file belongs to.
struct CLogSource {
  CString key;   // such as "outputs[1]"
  CString name;  // as the user calls it
};

class CRunObserver {
 public:
  virtual ~CRunObserver() = default;

  // The stages are open; names are those of the samples to come.
  virtual void Started(const CStringArray& /*names*/) {}
  // The extra variables have changed: names are those of the next samples.
  virtual void Renamed(const CStringArray& /*names*/) {}
  // The run goes on with another configuration; Renamed follows if the names have changed.
  virtual void Reloaded() {}
  // The newest sample: the variables of the input and the extra variables. Called after the stages have
  // processed the sample.
  virtual void Sampled(const CLogSample&) {}
  // After each scan.
  virtual void Counted(const CRunCounts&) {}
  // A Fatal, Error, Warning or Notice line, whether it is shown or not.
  virtual void Message(const CRunMessage&) {}
  virtual void LogClosed(const CLogSource&, const CSavedLog&) {}
  // A summary archive was saved with one more row and is still open.
  virtual void LogGrew(const CLogSource&, const CSavedLog&) {}
  virtual void LogNotSaved(const CLogSource&, const CUnsavedLog&) {}
  // The last scan is done. Next the stages close and save the samples in memory.
  virtual void Stopping() {}
  virtual void Stopped() {}
};

}  // namespace vastra
