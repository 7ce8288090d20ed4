#include "host/cli/reload_signal.h"

#include <signal.h>

#include <atomic>
#include <cerrno>

namespace vastra {
namespace {

// A signal handler has no argument for these.
std::atomic<CInbox*> g_reloadInbox{nullptr};
std::atomic<bool> g_isAsked{false};  // a message is in the inbox: many signals do not fill it

void HandleReload(int) {
  const int savedError = errno;
  CInbox* const inbox = g_reloadInbox;
  if (inbox && !g_isAsked.exchange(true)) inbox->Post(CReloadSignal::messageReload, 0, 0);
  errno = savedError;
}

}  // namespace

CReloadSignal::CReloadSignal(CInbox& inbox) {
  g_reloadInbox = &inbox;
  struct sigaction action = {};
  action.sa_handler = HandleReload;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGHUP, &action, nullptr);
}

CReloadSignal::~CReloadSignal() {
  ::signal(SIGHUP, SIG_IGN);
  g_reloadInbox = nullptr;
}

void CReloadSignal::Begin() { g_isAsked = false; }

}  // namespace vastra
