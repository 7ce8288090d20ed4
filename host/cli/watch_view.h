// CWatchView: shows the newest sample of a run. On a terminal a table with a row for each variable: its name,
// its value, a spark line of its last values. Elsewhere a line a second. A reader that stalls misses lines,
// and the run goes on.
#pragma once

#include <deque>
#include <vector>

#include "host/cli/session.h"
#include "host/cli/terminal/line_queue.h"
#include "host/cli/terminal/pace.h"

namespace vastra {

class CWatchView : public CSessionView {
 public:
  // wanted: the variables to show, in this order; all if it is empty.
  CWatchView(const CString& subject, CStringArray wanted);

  // Refuses a variable that the samples do not have. Called again when the names change.
  EExit Begin(const CStringArray& names) override;
  void Sampled(const CLogSample& sample) override { Take(sample, m_read + 1); }
  // The same for a sample of which the number is known.
  void Take(const CLogSample& sample, std::uint64_t number);
  CScanLoop::Time Show() override;
  EExit End() override;

  std::chrono::milliseconds Pause() const { return m_onTerminal ? kTablePause : kLinePause; }
  bool HasFailed() const { return m_status != kDone; }  // to write to standard output

 private:
  static constexpr std::chrono::milliseconds kTablePause{100}, kLinePause{1000};

  struct CRow {
    std::string m_name;
    int m_index;               // in the sample
    std::deque<float> m_last;  // oldest first
  };

  void TakeSparks();
  std::vector<std::string> Table() const;
  std::string Line() const;
  void PrintLine();
  void TakeFault();

  CString m_subject;
  CStringArray m_wanted;
  bool m_onTerminal;
  CLineQueue m_lines;  // of standard output while it is not a terminal
  CPace m_pace;
  std::vector<CRow> m_rows;
  std::uint64_t m_read = 0;  // the number of the newest sample
  CLogSample m_sample;       // the newest one
  bool m_shown;              // the present sample, or that there is none yet, has been shown
  EExit m_status = kDone;    // of standard output; after an error, which has been reported, the run continues
};

}  // namespace vastra
