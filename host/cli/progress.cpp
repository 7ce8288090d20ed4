#include "host/cli/progress.h"

#include "host/cli/terminal/figures.h"
#include "host/cli/terminal/terminal.h"

namespace vastra {
namespace {

using Number = unsigned long long;  // for printf

CString BarOf(const CRunCounts& counts) {
  CString bar;
  bar.Format("%s %3d %%  log %u of %u  ", Bar(counts.replay.part).c_str(),
             static_cast<int>(counts.replay.part * 100), counts.replay.done + 1, counts.replay.logs);
  return bar;
}

// The samples and rows that are in a journal but not in a saved log, and those that are lost; empty if there
// are none.
CString KeptText(const CLedgerSums& kept) {
  CString text;
  if (kept.inJournal) text += ", " + CString(std::to_string(kept.inJournal)) + " in a journal";
  if (kept.lost) text += ", " + CString(std::to_string(kept.lost)) + " lost";
  return text;
}

CString TextOf(const CRunCounts& counts) {
  CString numbers;
  numbers.Format("%llu read, %llu failed, %llu late, in memory %llu of %llu", Number(counts.scans.read),
                 Number(counts.scans.failedReads), Number(counts.scans.late), Number(counts.fill.m_samples),
                 Number(counts.fill.m_total));
  return (counts.replay.logs ? BarOf(counts) : CString()) + numbers + KeptText(counts.kept);
}

}  // namespace

CScanLoop::Time CProgress::Show() {
  if (!m_isShown || !CTerminal::Instance().HasStatus()) return CScanLoop::Time::max();
  if (!m_pace.IsDue()) return m_pace.Next();
  CTerminal::Instance().Status({TextOf(m_counts).Std()});
  return CScanLoop::Time::max();
}

EExit CProgress::End() {
  CTerminal::Instance().EndStatus();
  return kDone;
}

}  // namespace vastra
