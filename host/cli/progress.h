// CProgress: the status line of a run: a bar for a replay, the counts, and how many samples are not on
// disk yet.
#pragma once

#include "host/cli/session.h"
#include "host/cli/terminal/pace.h"

namespace vastra {

class CProgress : public CSessionView {
 public:
  // isShown: otherwise there is no line.
  explicit CProgress(bool isShown = true) : m_isShown(isShown) {}

  void Counted(const CRunCounts& counts) override { m_counts = counts; }
  // Draws the counts, at most ten times a second.
  CScanLoop::Time Show() override;
  EExit End() override;

 private:
  const bool m_isShown;
  CRunCounts m_counts;
  CPace m_pace;
};

}  // namespace vastra
