#include "host/cli/progress.h"

#include "host/cli/terminal/figures.h"
#include "host/cli/terminal/terminal.h"

namespace vastra {
namespace {

using Number = unsigned long long;  // as printf knows it

CString BarOf(const CLogInput& input) {
  const UINT total = input.TotalFilesToRead();
  const float part = input.PercentCompleted() + input.PartOfLog() / static_cast<float>(total);
  CString bar;
  bar.Format("%s %3d %%  log %u of %u  ", Bar(part).c_str(), static_cast<int>(part * 100),
             input.FilesRead() + 1, total);
  return bar;
}

CString TextOf(const CScanLoop& loop) {
  const CLogInput& input = loop.Input();
  const CScanCounts& counts = loop.Counts();
  const CFill fill = loop.Outputs().GetFill();
  CString numbers;
  numbers.Format("%llu read, %llu failed, %llu late, in memory %llu of %llu", Number(counts.read),
                 Number(counts.failedReads), Number(counts.late), Number(fill.m_samples), Number(fill.m_of));
  return (input.TotalFilesToRead() ? BarOf(input) : CString()) + numbers;
}

}  // namespace

CScanLoop::Time CProgress::Show(const CScanLoop& loop) {
  if (!CTerminal::Instance().HasStatus()) return CScanLoop::Time::max();
  if (!m_pace.IsDue()) return m_pace.Next();
  CTerminal::Instance().Status({TextOf(loop).Std()});
  return CScanLoop::Time::max();
}

EExit CProgress::End() {
  CTerminal::Instance().EndStatus();
  return kDone;
}

}  // namespace vastra
