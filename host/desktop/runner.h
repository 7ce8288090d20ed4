// CRunner: the logger of the desktop. Timers of the event loop start the scans, workers read and write, and a
// thread of its own opens and closes the stages, so that the window never waits for a PLC.
//
//   stopped -> starting -> running -> stopping -> stopped
//                     \-> stopped (a stage did not open)
#pragma once

#include <QObject>
#include <QTimer>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
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
    std::function<void(const CRunMessage&)> message = {};  // of the run; called from any thread
  };

  CRunner(CListener listener, CRunMessenger& messenger);
  ~CRunner() override;  // stops, and waits for workers and threads
  CRunner(const CRunner&) = delete;
  CRunner& operator=(const CRunner&) = delete;

  // Replaces the run by one of configuration; only while stopped. The stages of the former run are destroyed:
  // connect the views to the new ones. options: the runner sets the workers and their target.
  void SetConfiguration(const CConfiguration& configuration, CLoopOptions options);
  void Start();  // only while stopped
  void Stop();   // any time; with patience in the options it waits for no driver longer

  EState State() const { return m_state; }
  CRun& Run() { return *m_run; }
  // While stopping: what the stop waits for, or what it has done last.
  const CString& StopLine() const { return m_stopLine; }
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
  void Counted(const CRunCounts& counts) override;
  void Message(const CRunMessage& message) override;
  void Refresh();  // of the views, if it is due
  void Tick();
  void InBackground(std::function<int()> work, UINT message);
  void Enter(EState state);

  const CListener m_listener;
  QObject m_receiver;  // of posted messages; destroyed before the other members
  QTimer m_timer;
  CRunMessenger& m_messenger;
  std::unique_ptr<CRun> m_run;
  std::thread m_background;
  // A report of the thread of the window: a stage that has nothing to do sends it during the step.
  std::optional<CMessage> m_ownReport;
  std::mutex m_mutex;
  std::condition_variable m_posted;
  int m_reports = 0;  // of workers that were posted and are not handled yet; guarded by m_mutex
  EState m_state = EState::stopped;
  std::atomic<bool> m_stopWanted = false;
  CString m_stopLine;
  bool m_driving = false;  // during a step, in which a message box can run the event loop
  UINT m_refreshPeriod = 0;
  std::uint64_t m_failedReads = 0;  // at the end of the last scan
  CScanLoop::Time m_refreshDue{};
  CScanLoop::Time m_tickDue{};
};

}  // namespace vastra
