// CRunner: the logger of the desktop. Timers of the event loop start the scans, workers read and write, and a
// thread of its own opens and closes the stages, so that the window never waits for a PLC.
//
//   stopped -> starting -> running -> stopping -> stopped
//                     \-> stopped (a stage did not open)
#pragma once

#include <QObject>
#include <QTimer>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "host/run/run.h"

namespace vastra {

class CRunner : private CMessageTarget, private CRunObserver {
 public:
  enum class EState { stopped, starting, running, stopping };
  // Called on the thread of the window.
  struct CListener {
    std::function<void()> changed;  // the state has changed
    std::function<void()> failed;   // a stage did not open: Run().OpenFault()
    std::function<void()> refresh;  // time to draw the views
    std::function<void()> tick;   // between two scans, a few times a second: the counts of Run() can be read
    std::function<void()> trend;  // a view has changed the settings of the trending stage
  };

  CRunner(CListener listener, CRunMessenger& messenger);
  ~CRunner() override;  // waits for workers and threads
  CRunner(const CRunner&) = delete;
  CRunner& operator=(const CRunner&) = delete;

  // Replaces the run by one of configuration; only while stopped. The stages of the former run are destroyed:
  // connect the views to the new ones. trend: the settings that the trending stage shares. policy,
  // replayWrites: as in CLoopOptions.
  void SetConfiguration(const CConfiguration& configuration, CTrendConfig& trend,
                        const std::optional<CLogPolicy>& policy = std::nullopt, bool replayWrites = true);
  void Start();  // only while stopped
  void Stop();   // any time

  EState State() const { return m_state; }
  CRun& Run() { return *m_run; }
  // Period of the refresh of the views, in milliseconds: the scan period or its smallest multiple of at least
  // 50 ms; 100 ms if the scan period is 0.
  UINT RefreshPeriod() const { return m_refreshPeriod; }

  static UINT RefreshPeriodOf(UINT scanPeriod);

 private:
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnMessage(UINT message, WPARAM wparam);
  void Go();  // makes a scan if it is due and sets the timer for the next one
  void Drive(const std::function<void()>& step);
  void Sampled(const CLogSample&) override;
  void Tick();
  void InBackground(std::function<int()> work, UINT message);
  void Enter(EState state);

  const CListener m_listener;
  QObject m_receiver;  // of posted messages; destroyed before the other members
  QTimer m_timer;
  CRunMessenger& m_messenger;
  std::unique_ptr<CRun> m_run;
  std::thread m_background;
  std::mutex m_mutex;
  std::condition_variable m_posted;
  int m_reports = 0;  // of workers that were posted and are not handled yet; guarded by m_mutex
  EState m_state = EState::stopped;
  bool m_stopWanted = false;
  bool m_driving = false;  // during a step, in which a message box can run the event loop
  UINT m_refreshPeriod = 0;
  CScanLoop::Time m_refreshDue{};
  CScanLoop::Time m_tickDue{};
};

}  // namespace vastra
