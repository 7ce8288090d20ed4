// CPace: how often what a user sees is drawn.
#pragma once

#include "host/common/scan_loop.h"

namespace vastra {

class CPace {
 public:
  using Time = CScanLoop::Time;

  explicit CPace(std::chrono::milliseconds pause = std::chrono::milliseconds(100)) : m_pause(pause) {}

  // Whether it is time to draw: not before the pause is over, unless nothing will happen until then.
  bool IsDue(Time until) {
    const Time now = std::chrono::steady_clock::now();
    if (now < m_next && until < m_next) return false;
    m_next = now + m_pause;
    return true;
  }

 private:
  std::chrono::milliseconds m_pause;
  Time m_next{};
};

}  // namespace vastra
