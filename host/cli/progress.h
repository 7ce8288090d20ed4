// CProgress: the status line of a run: a bar for a replay, the counts for live input, and how much is not on
// disk yet.
#pragma once

#include "host/cli/pace.h"
#include "host/cli/session.h"

namespace vastra {

class CProgress : public CSessionView {
 public:
  // Draws the present state, but not more often than ten times a second, unless nothing will happen until
  // then.
  void Show(const CScanLoop& loop, CScanLoop::Time until) override;
  EExit End() override;

 private:
  CPace m_pace;
};

}  // namespace vastra
