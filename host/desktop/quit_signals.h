// CQuitSignals: SIGINT, SIGTERM and SIGHUP as events of the event loop: the program closes its logs and ends.
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace vastra {

class CQuitSignals {
 public:
  explicit CQuitSignals(std::function<void()> stop);
  ~CQuitSignals();
  CQuitSignals(const CQuitSignals&) = delete;
  CQuitSignals& operator=(const CQuitSignals&) = delete;

 private:
  int m_pipe[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace vastra
