#include "host/desktop/runner.h"

#include <QThread>

#include <algorithm>
#include <utility>

#include "host/common/message_text.h"

namespace vastra {
namespace {

// Messages in addition to those of the workers.
constexpr UINT messageOpened = 100, messageClosed = 101;

constexpr UINT kShortestRefresh = 50, kRefreshAtFullSpeed = 100;  // milliseconds
constexpr std::chrono::milliseconds kTick{200}, kLongestWait{1000};
// A refresh that is due within half a period is made now, since scans are not exact to the microsecond.
constexpr UINT kSlack = 2;

}  // namespace

CRunner::CRunner(CListener listener, CRunMessenger& messenger)
    : m_listener(std::move(listener)), m_messenger(messenger) {
  m_timer.setSingleShot(true);
  m_timer.setTimerType(Qt::PreciseTimer);
  QObject::connect(&m_timer, &QTimer::timeout, &m_receiver, [this] { Go(); });
}

// A worker posts its report after it has released the stage: the runner waits for the report itself.
CRunner::~CRunner() {
  if (m_run) m_run->AskToStop();
  if (m_background.joinable()) m_background.join();
  if (m_run && m_run->IsPending()) {
    std::unique_lock lock(m_mutex);
    m_posted.wait(lock, [this] { return m_reports > 0; });
  }
  m_run.reset();
}

UINT CRunner::RefreshPeriodOf(UINT scanPeriod) {
  if (scanPeriod == 0) return kRefreshAtFullSpeed;
  return (kShortestRefresh + scanPeriod - 1) / scanPeriod * scanPeriod;
}

void CRunner::SetConfiguration(const CConfiguration& configuration, CLoopOptions options) {
  options.threaded = true;
  options.target = this;
  m_run.reset();  // before the new run: only one run at a time uses the messenger
  const bool reports = options.policy.has_value();
  m_run = std::make_unique<CRun>(configuration, m_messenger, CRunOptions{options, m_listener.trend, reports});
  m_run->AddObserver(this);
  m_refreshPeriod = RefreshPeriodOf(m_run->Input().GetScanPeriod());
}

void CRunner::Start() {
  if (m_state != EState::stopped || !m_run) return;
  m_stopWanted = false;
  m_stopLine.Empty();
  m_refreshDue = {};
  Enter(EState::starting);
  InBackground([this] { return m_run->Start(); }, messageOpened);
}

void CRunner::Stop() {
  m_stopLine.Empty();
  m_stopWanted = true;
  if (m_run) m_run->AskToStop();  // a worker may wait for a driver
  if (m_state == EState::running) Go();
}

void CRunner::InBackground(std::function<int()> work, UINT message) {
  if (m_background.joinable()) m_background.join();
  m_background =
      std::thread([this, work = std::move(work), message] { Post(message, static_cast<WPARAM>(work()), 0); });
}

// From any thread. A report that a step sends itself waits for the end of the step only, not for the event
// loop, which may have windows to draw.
void CRunner::Post(UINT message, WPARAM wparam, LPARAM) {
  if (QThread::currentThread() == m_receiver.thread()) {
    m_ownReport = {message, wparam, 0};
    return;
  }
  QMetaObject::invokeMethod(
      &m_receiver, [this, message, wparam] { OnMessage(message, wparam); }, Qt::QueuedConnection);
  if (message == messageOpened || message == messageClosed) return;
  const std::lock_guard lock(m_mutex);
  ++m_reports;
  m_posted.notify_one();
}

void CRunner::OnMessage(UINT message, WPARAM wparam) {
  if (message == messageOpened) {
    Enter(wparam ? EState::running : EState::stopped);
    if (!wparam) return m_listener.failed();
  } else if (message == messageClosed) {
    return Enter(EState::stopped);
  } else {
    {
      const std::lock_guard lock(m_mutex);
      --m_reports;
    }
    Drive([&] { m_run->Notify(message, wparam); });
  }
  Go();
}

void CRunner::Drive(const std::function<void()>& step) {
  m_driving = true;
  step();
  while (const auto report = std::exchange(m_ownReport, {}))
    m_run->Notify(report->m_message, report->m_wparam);
  m_driving = false;
}

void CRunner::Go() {
  if (m_state != EState::running || m_driving) return;
  if (!m_run->IsPending()) Tick();
  if (m_run->IsRunning() && !m_run->IsPending() && !m_stopWanted &&
      m_run->NextDue() <= CScanLoop::Time::clock::now())
    Drive([this] { m_run->Step(); });
  if (!m_run->IsRunning()) return Enter(EState::stopped);
  if (m_run->IsPending()) return;  // the message of the worker continues the scan
  if (m_stopWanted) {
    Enter(EState::stopping);
    return InBackground([this] { return m_run->Stop(), 1; }, messageClosed);
  }
  const auto wait = m_run->NextDue() - CScanLoop::Time::clock::now();
  m_timer.start(std::clamp<std::chrono::milliseconds>(std::chrono::ceil<std::chrono::milliseconds>(wait),
                                                      std::chrono::milliseconds(0), kLongestWait));
}

void CRunner::Sampled(const CLogSample&) { Refresh(); }

// From any thread.
void CRunner::Message(const CRunMessage& message) {
  if (m_listener.message) m_listener.message(message);
  if (!m_stopWanted) return;
  const CString line(MessageText(message));
  QMetaObject::invokeMethod(
      &m_receiver,
      [this, line] {
        m_stopLine = line;
        if (m_state != EState::stopped) m_listener.changed();
      },
      Qt::QueuedConnection);
}

// After a failed read the views show the newest sample once more, so that an outage has its length in the
// curves.
void CRunner::Counted(const CRunCounts& counts) {
  const CScanCounts& scans = counts.scans;
  if (scans.failedReads > std::exchange(m_failedReads, scans.failedReads) && scans.read > 0) Refresh();
}

void CRunner::Refresh() {
  const auto now = CScanLoop::Time::clock::now();
  const std::chrono::milliseconds period(m_refreshPeriod);
  if (now + period / kSlack < m_refreshDue) return;
  m_refreshDue = std::max(m_refreshDue + period, now);
  m_listener.refresh();
}

void CRunner::Tick() {
  const auto now = CScanLoop::Time::clock::now();
  if (now < m_tickDue) return;
  m_tickDue = now + kTick;
  if (m_run->IsRunning()) m_run->Deliver();
  m_listener.tick();
}

void CRunner::Enter(EState state) {
  if (state == EState::stopped) m_timer.stop();
  m_state = state;
  m_listener.changed();
}

}  // namespace vastra
