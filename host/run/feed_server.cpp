#include "host/run/feed_server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kAccepted = 16;                  // connections in one pass at most
constexpr milliseconds kFloodPause{10};        // after a pass with so many
constexpr milliseconds kDescriptorPause{500};  // while the process has no descriptor for a connection
constexpr int kSendBuffer = 64 << 10;          // of the system, for each reader
constexpr int kNice = 10;                      // of the thread: the scans go first

CFeedOwner OwnerOf(const CFeedPlace& place) {
  CFeedOwner owner{place.configuration, {}};
  _ftime(owner.started);
  return owner;
}

}  // namespace

CFeedServer::CFeedServer(const CFeedSource& source, const CFeedPlace& place)
    : m_source(source), m_owner(OwnerOf(place)), m_socket(place.socket) {}

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
  if (CString fault = m_socket.Open(); !fault.IsEmpty()) return fault;
  m_pContent = std::make_unique<CFeedContent>(m_source, m_owner);
  const CSignalsBlocked blocked;
  m_thread = std::thread([this] { Main(); });
  return {};
} catch (const std::system_error& error) {
  return "the thread of the feed cannot be started: " + CString(error.code().message());
}

// Without memory the readers are closed: they may come again.
void CFeedServer::Main() {
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), kNice);
  while (!m_isEnding) try {
      Pass();
    } catch (const std::exception&) {
      m_readers.clear();
      m_acceptDue = Clock::now() + kDescriptorPause;
    }
  m_polled.clear();
  try {
    m_pContent->Refresh(Clock::now());
    WorkAll(true, Clock::now());
  } catch (const std::exception&) {  // they do not hear of the end
  }
  m_readers.clear();
}

void CFeedServer::Pass() {
  Poll(Clock::now());
  const Time now = Clock::now();
  if (m_polled[1].revents) Accept(now);
  const bool isTick = now >= m_pContent->RefreshedAt() + CFeedContent::kTick;
  if (isTick) m_pContent->Refresh(now);
  WorkAll(isTick, now);
}

// Without readers the thread sleeps until one comes.
void CFeedServer::Poll(Time now) {
  m_polled.clear();
  m_polled.push_back({m_wake.Get(), POLLIN, 0});
  const bool accepts = now >= m_acceptDue;
  m_polled.push_back({accepts ? m_socket.Get() : -1, POLLIN, 0});
  Time until = accepts ? Time::max() : m_acceptDue;
  if (!m_readers.empty()) until = std::min(until, m_pContent->RefreshedAt() + CFeedContent::kTick);
  for (const CFeedReader& reader : m_readers) m_polled.push_back({reader.Get(), reader.Events(now), 0});
  const auto rest = std::chrono::ceil<milliseconds>(std::max(until - now, Clock::duration::zero()));
  if (::poll(m_polled.data(), m_polled.size(), until == Time::max() ? -1 : static_cast<int>(rest.count())) <
      0)
    for (pollfd& polled : m_polled) polled.revents = 0;
}

void CFeedServer::Accept(Time now) {
  for (int i = 0; i < kAccepted; ++i) {
    CDescriptor socket(::accept4(m_socket.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket.Get() >= 0)
      Admit(std::move(socket), now);
    else if (errno == EAGAIN)
      return;
    else if (errno != EINTR && errno != ECONNABORTED)
      return void(m_acceptDue = now + kDescriptorPause);
  }
  m_acceptDue = now + kFloodPause;
}

void CFeedServer::Admit(CDescriptor socket, Time now) {
  if (m_readers.size() >= kMostReaders) {
    const std::string line = ErrorLine("there are 64 readers already");
    ::send(socket.Get(), line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return;
  }
  ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
  if (m_readers.empty()) m_pContent->Refresh(now);
  m_readers.emplace_back(std::move(socket), *m_pContent, now);
}

// areAllDue: otherwise only those that are ready. A reader that was just admitted was not polled.
void CFeedServer::WorkAll(bool areAllDue, Time now) {
  std::size_t index = 2;
  for (auto reader = m_readers.begin(); reader != m_readers.end(); ++index) {
    const bool isNew = index >= m_polled.size();
    const short ready = isNew ? short{0} : m_polled[index].revents;
    const bool goesOn = (!areAllDue && !isNew && !ready) || reader->Work(ready, now);
    reader = goesOn ? std::next(reader) : m_readers.erase(reader);
  }
}

}  // namespace vastra
