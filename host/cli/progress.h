// CProgress: the status line of a run: a bar for a replay, the counts for live input, and how much is not on
// disk yet.
#pragma once

#include "host/common/scan_loop.h"

namespace vastra {

class CProgress {
 public:
  // loop is followed as long as this lives; the status line goes with it.
  explicit CProgress(const CScanLoop& loop) : m_loop(loop) {}
  CProgress(const CProgress&) = delete;
  CProgress& operator=(const CProgress&) = delete;
  ~CProgress();

  // Draws the present state, but not more often than ten times a second, unless nothing will happen until
  // then.
  void Show(CScanLoop::Time until);

 private:
  CString Text() const;

  const CScanLoop& m_loop;
  CScanLoop::Time m_next{};  // when it may be drawn again
};

}  // namespace vastra
