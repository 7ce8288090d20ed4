#include "host/run/inbox.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "host/run/run.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kReportPause{1};  // between two reports on the logs

// A signal handler has no argument for these.
std::atomic<CInbox*> g_inbox{nullptr};
std::atomic<bool> g_isStopped{false};    // a signal has come
std::atomic<std::int64_t> g_askedAt{0};  // by the first SIGINT or SIGTERM, milliseconds on Clock; 0: not yet

// Signals that come together are one request: timeout(1) sends SIGTERM to the command and to its group.
constexpr std::int64_t kOneRequest = 200;  // milliseconds

constexpr int kStops[] = {SIGINT, SIGTERM, SIGHUP};

// The signal that ends the process is delivered when its handler returns, whatever the other threads wait
// for.
void HandleStop(int signal) {
  const int savedError = errno;
  g_isStopped = true;
  const std::int64_t now =
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count();
  std::int64_t first = 0;
  if (signal != SIGHUP && !g_askedAt.compare_exchange_strong(first, now) && now - first >= kOneRequest) {
    ::signal(signal, SIG_DFL);
    ::raise(signal);
  }
  if (CInbox* inbox = g_inbox) inbox->Post(CStopSignals::messageStop, 0, 0);
  errno = savedError;
}

void SetHandler(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // does not interrupt the waiting of a driver
  ::sigaction(signal, &action, nullptr);
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

timespec UntilThen(CInbox::Time until) {
  const auto rest = std::max(until - Clock::now(), Clock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
  return {seconds.count(), (rest - seconds).count()};
}

}  // namespace

CInbox::CInbox() {
  if (::pipe2(m_ends, O_CLOEXEC | O_NONBLOCK) != 0)
    throw std::system_error(errno, std::generic_category(), "pipe");
}

CInbox::~CInbox() {
  for (int end : m_ends) ::close(end);
}

// A message is shorter than PIPE_BUF: it is written whole or not at all. If the pipe is full, a stop request
// is already pending, so this one can be dropped. After the write the reader may destroy the inbox: no member
// is used from then on.
void CInbox::Post(UINT message, WPARAM wparam, LPARAM lparam) {
  const CMessage posted{message, wparam, lparam};
  ++m_count;
  if (::write(m_ends[1], &posted, sizeof posted) != sizeof posted) --m_count;
}

int CInbox::Wait(CMessage& message, Time until) {
  if (m_count == 0 && until <= Clock::now()) return 0;
  if (!IsReadable(until) || ::read(m_ends[0], &message, sizeof message) != sizeof message) return 0;
  --m_count;
  return 1;
}

bool CInbox::IsReadable(Time until) const {
  pollfd end = {m_ends[0], POLLIN, 0};
  for (;;) {
    const timespec rest = UntilThen(until);
    const int ready = ::ppoll(&end, 1, until == Time::max() ? nullptr : &rest, nullptr);
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

CStopSignals::CStopSignals(CInbox& inbox) {
  g_isStopped = false;
  g_askedAt = 0;
  g_inbox = &inbox;
  for (int signal : kStops)
    if (signal != SIGHUP || !IsIgnored(SIGHUP)) SetHandler(signal, HandleStop);  // nohup keeps its effect
}

// After a stop the handlers stay installed: the last lines are printed even if the terminal closes meanwhile.
CStopSignals::~CStopSignals() {
  g_inbox = nullptr;
  if (g_isStopped) return;
  for (int signal : kStops)
    if (!IsIgnored(signal)) SetHandler(signal, SIG_DFL);
}

bool CStopSignals::HaveCome() { return g_isStopped; }

void DriveToEnd(CRun& run, CInbox& inbox, const std::function<CInbox::Time()>& show,
                const std::function<void(UINT)>& asked) {
  CInbox::Time report = run.KeepsLogs() ? Clock::now() : CInbox::Time::max();
  UINT question = 0;
  while (run.IsRunning()) {
    if (question != 0 && !run.IsPending()) {
      asked(std::exchange(question, 0));
      continue;
    }
    const CInbox::Time due = run.IsPending() ? CInbox::Time::max() : run.NextDue();
    const CInbox::Time redraw = show();
    CMessage message;
    if (!inbox.Wait(message, std::min({due, redraw, report}))) {
      if (due <= std::min(redraw, report)) {
        run.Step();
      } else if (report <= redraw) {
        report = Clock::now() + kReportPause;
        run.Deliver();
      }
    } else if (message.m_message == CStopSignals::messageStop) {
      run.Stop();
    } else if (message.m_message >= kHostMessages && asked) {
      question = message.m_message;
    } else {
      run.Notify(message.m_message, message.m_wparam);
    }
  }
}

}  // namespace vastra
