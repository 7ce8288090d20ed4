#include "host/cli/progress.h"

#include "host/cli/terminal.h"

namespace vastra {
namespace {

constexpr int kBarWidth = 20;

using Number = unsigned long long;  // as printf knows it

CString Bar(const CLogInput& input) {
  const UINT total = input.TotalFilesToRead();
  const float part = input.PercentCompleted() + input.PartOfLog() / static_cast<float>(total);
  const auto done = static_cast<int>(part * kBarWidth);
  CString bar;
  bar.Format("[%s%s] %3d %%  log %u of %u  ", std::string(static_cast<std::size_t>(done), '#').c_str(),
             std::string(static_cast<std::size_t>(kBarWidth - done), '.').c_str(),
             static_cast<int>(part * 100), input.FilesRead() + 1, total);
  return bar;
}

CString TextOf(const CScanLoop& loop) {
  const CLogInput& input = loop.Input();
  const CScanCounts& counts = loop.Counts();
  const CFill fill = loop.Outputs().GetFill();
  CString numbers;
  numbers.Format("%llu read, %llu failed, %llu late, in memory %llu of %llu", Number(counts.read),
                 Number(counts.failedReads), Number(counts.late), Number(fill.m_samples), Number(fill.m_of));
  return (input.TotalFilesToRead() ? Bar(input) : CString()) + numbers;
}

}  // namespace

CScanLoop::Time CProgress::Show(const CScanLoop& loop) {
  if (!CTerminal::Instance().HasStatus()) return CScanLoop::Time::max();
  if (!m_pace.IsDue()) return m_pace.Next();
  CTerminal::Instance().Status(TextOf(loop));
  return CScanLoop::Time::max();
}

EExit CProgress::End() {
  CTerminal::Instance().EndStatus();
  return kDone;
}

}  // namespace vastra
