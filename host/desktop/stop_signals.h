// SIGINT and SIGTERM as events: the program closes its logs and ends.
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace vastra {

class CStopSignals {
 public:
  explicit CStopSignals(std::function<void()> stop);
  ~CStopSignals();
  CStopSignals(const CStopSignals&) = delete;
  CStopSignals& operator=(const CStopSignals&) = delete;

 private:
  int m_pipe[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace vastra
