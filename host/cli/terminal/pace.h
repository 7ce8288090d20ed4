// CPace: limits how often the status is drawn.
#pragma once

#include "host/common/scan_loop.h"

namespace vastra {

class CPace {
 public:
  using Time = CScanLoop::Time;

  explicit CPace(std::chrono::milliseconds pause = std::chrono::milliseconds(100)) : m_pause(pause) {}

  // Whether it is time to draw. If so, the next time is one pause later.
  bool IsDue() {
    const Time now = std::chrono::steady_clock::now();
    if (now < m_next) return false;
    m_next = now + m_pause;
    return true;
  }
  Time Next() const { return m_next; }

 private:
  std::chrono::milliseconds m_pause;
  Time m_next{};
};

}  // namespace vastra
