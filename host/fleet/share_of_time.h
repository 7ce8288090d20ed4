// CShareOfTime: holds work to a twentieth of a processor.
#pragma once

#include <chrono>
#include <ctime>

namespace vastra {

// Made when a turn of the work begins. It counts what this thread uses of a processor: on a busy machine a
// turn may last long without costing much.
class CShareOfTime {
 public:
  // From the beginning of the turn to the next one.
  std::chrono::nanoseconds Pause() const {
    constexpr int kTurns = 20;
    return kTurns * (Used() - m_begin);
  }

 private:
  static std::chrono::nanoseconds Used() {
    std::timespec used = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
  }

  const std::chrono::nanoseconds m_begin = Used();
};

}  // namespace vastra
