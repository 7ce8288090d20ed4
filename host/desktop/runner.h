// CRunner: one logger of the desktop. It lets the event loop pace the scans, the workers on, so that the
// window never waits for a PLC: opening and closing the stages is done on a thread of its own, too.
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
  // What the owner wants to hear of, on the window's thread.
  struct CListener {
    std::function<void()> changed;  // the state
    std::function<void()> failed;   // a stage did not open: Run().OpenFault()
    std::function<void()> refresh;  // the views may draw
    std::function<void()> tick;     // between two scans, some times a second: the counts of Run() can be read
    std::function<void()> trend;    // a view has changed the settings of the trending stage
  };

  CRunner(CListener listener, CRunMessenger& messenger);
  ~CRunner() override;  // waits for what is under way
  CRunner(const CRunner&) = delete;
  CRunner& operator=(const CRunner&) = delete;

  // Makes the stages of configuration, closed; only while stopped. The former ones go, so what points to them
  // must be given the new ones.
  // trend: the settings that the trending stage shares.
  void SetConfiguration(const CConfiguration& configuration, CTrendConfig& trend);
  void Start();  // only while stopped
  void Stop();   // any time

  EState State() const { return m_state; }
  CRun& Run() { return *m_run; }
  // Milliseconds from refresh to refresh of the views: the period of the scans, or its smallest multiple from
  // 50 ms on; 100 ms if the scans follow each other at once.
  UINT RefreshPeriod() const { return m_refreshPeriod; }

  static UINT RefreshPeriodOf(UINT scanPeriod);

 private:
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;
  void OnMessage(UINT message, WPARAM wparam);
  void Go();  // makes the scans that are due and sets the timer for the next one
  void Drive(const std::function<void()>& step);
  void Sampled(const CLogSample&) override;
  void Tick();
  void InBackground(std::function<int()> work, UINT message);
  void Enter(EState state);

  const CListener m_listener;
  QObject m_receiver;  // of what is posted; goes before the rest
  QTimer m_timer;
  CRunMessenger& m_messenger;
  std::unique_ptr<CRun> m_run;
  std::thread m_background;
  std::mutex m_mutex;
  std::condition_variable m_posted;
  int m_reports = 0;  // of workers that were posted and are not handled yet; guarded by m_mutex
  EState m_state = EState::stopped;
  bool m_stopWanted = false;
  bool m_driving = false;  // a step is under way; a box in it runs the event loop
  UINT m_refreshPeriod = 0;
  CScanLoop::Time m_refreshDue{};
  CScanLoop::Time m_tickDue{};
};

}  // namespace vastra
