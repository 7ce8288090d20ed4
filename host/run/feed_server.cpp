#include "host/run/feed_server.h"

#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kNice = 10;  // of the thread: the scans go first

CFeedOwner OwnerOf(const CFeedPlace& place) {
  CFeedOwner owner{place.configuration, {}};
  _ftime(owner.started);
  return owner;
}

}  // namespace

CFeedServer::CFeedServer(const CFeedSource& source, const CFeedPlace& place)
    : m_source(source), m_path(place.socket), m_owner(OwnerOf(place)) {}

CFeedServer::~CFeedServer() {
  if (!m_thread.joinable()) return;
  m_isEnding = true;
  const std::uint64_t one = 1;
  while (::write(m_wake.Get(), &one, sizeof one) < 0 && errno == EINTR) {
  }
  m_thread.join();
}

CString CFeedServer::Open() try {
  m_wake = CDescriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (m_wake.Get() < 0) throw std::system_error(errno, std::generic_category());
  m_pContent = std::make_unique<CRunFeedContent>(m_source, m_owner);
  m_pPort = std::make_unique<CFeedPort>(m_path, *m_pContent);
  if (CString fault = m_pPort->Open(); !fault.IsEmpty()) return fault;
  const CSignalsBlocked blocked;
  m_thread = std::thread([this] { Main(); });
  return {};
} catch (const std::system_error& error) {
  return "the thread of the feed cannot be started: " + CString(error.code().message());
}

void CFeedServer::Main() {
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kNice);
  while (!m_isEnding) try {
      Pass();
    } catch (const std::exception&) {
      m_pPort->CloseReaders(Clock::now());
    }
  try {
    m_pPort->Finish(Clock::now());
  } catch (const std::exception&) {  // the readers do not hear of the end
    m_pPort->CloseReaders(Clock::now());
  }
}

// Without readers the thread sleeps until one comes.
void CFeedServer::Pass() {
  m_polled.clear();
  m_polled.push_back({m_wake.Get(), POLLIN, 0});
  const Clock::time_point now = Clock::now(), until = m_pPort->AddPolled(now, m_polled);
  const auto rest =
      std::chrono::ceil<std::chrono::milliseconds>(std::max(until - now, Clock::duration::zero()));
  const int patience = until == Clock::time_point::max() ? -1 : static_cast<int>(rest.count());
  if (::poll(m_polled.data(), m_polled.size(), patience) < 0)
    for (pollfd& polled : m_polled) polled.revents = 0;
  m_pPort->Work(Clock::now(), m_polled);
}

}  // namespace vastra
