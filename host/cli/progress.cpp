#include "host/cli/progress.h"

#include "host/cli/terminal.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kPause{100};
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

}  // namespace

CProgress::~CProgress() { CTerminal::Instance().EndStatus(); }

void CProgress::Show(CScanLoop::Time until) {
  if (!CTerminal::Instance().HasStatusLine()) return;
  const CScanLoop::Time now = std::chrono::steady_clock::now();
  if (now < m_next && until < m_next) return;
  m_next = now + kPause;
  CTerminal::Instance().Status(Text());
}

CString CProgress::Text() const {
  const CLogInput& input = m_loop.Input();
  const CScanCounts& counts = m_loop.Counts();
  const CFill fill = m_loop.Outputs().GetFill();
  CString numbers;
  numbers.Format("%llu read, %llu failed, %llu late, in memory %llu of %llu", Number(counts.read),
                 Number(counts.failedReads), Number(counts.late), Number(fill.m_samples), Number(fill.m_of));
  return (input.TotalFilesToRead() ? Bar(input) : CString()) + numbers;
}

}  // namespace vastra
