#include "host/desktop/quit_signals.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

namespace vastra {
namespace {

std::atomic<int> g_writeEnd{-1};

// A signal handler may do no more than wake the event loop.
void OnSignal(int) {
  const char one = 1;
  [[maybe_unused]] const auto written = ::write(g_writeEnd, &one, 1);
}

void Handle(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(number, &action, nullptr);
}

}  // namespace

CQuitSignals::CQuitSignals(std::function<void()> stop) {
  if (::pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  g_writeEnd = m_pipe[1];
  m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                   [this, stop = std::move(stop)] {
                     char bytes[16];
                     while (::read(m_pipe[0], bytes, sizeof bytes) > 0) {
                     }
                     stop();
                   });
  Handle(OnSignal);
}

CQuitSignals::~CQuitSignals() {
  if (!m_notifier) return;
  Handle(SIG_DFL);
  g_writeEnd = -1;
  ::close(m_pipe[0]);
  ::close(m_pipe[1]);
}

}  // namespace vastra
