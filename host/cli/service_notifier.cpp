#include "host/cli/service_notifier.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/common/shown_text.h"

namespace vastra {
namespace {

constexpr std::chrono::seconds kStatusPause{1};
constexpr std::chrono::milliseconds kAgain{100};  // until what found the socket full is sent again
constexpr std::size_t kMostStatus = 500;          // bytes of a status

std::string_view Variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// 0 for what is not a number.
std::int64_t NumberOf(std::string_view text) {
  std::int64_t number = 0;
  const auto [rest, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  return fault == std::errc() && rest == text.data() + text.size() ? number : 0;
}

// The time of the watchdog; 0: none is set, or it is that of another process.
std::chrono::microseconds WatchdogTime() {
  const std::string_view owner = Variable("WATCHDOG_PID");
  if (!owner.empty() && NumberOf(owner) != ::getpid()) return {};
  return std::chrono::microseconds(std::max<std::int64_t>(NumberOf(Variable("WATCHDOG_USEC")), 0));
}

// The address of a socket name; its length is 0 if there is none that fits.
socklen_t ToAddress(std::string_view name, sockaddr_un& address) {
  address.sun_family = AF_UNIX;
  if (name.size() < 2 || name.size() >= sizeof address.sun_path || (name[0] != '/' && name[0] != '@'))
    return 0;
  std::memcpy(address.sun_path, name.data(), name.size());
  if (name[0] == '@') address.sun_path[0] = '\0';
  return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
}

}  // namespace

CServiceNotifier::CServiceNotifier(bool isOn) {
  if (isOn) m_length = ToAddress(Variable("NOTIFY_SOCKET"), m_address);
  if (m_length == 0) return;
  m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  m_pause = WatchdogTime() / 2;
}

CServiceNotifier::~CServiceNotifier() {
  if (m_socket >= 0) ::close(m_socket);
}

// The manager compares the time with that of its own request.
void CServiceNotifier::Reloading() {
  timespec now = {};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  const auto microseconds = std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
  Change("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(microseconds));
}

void CServiceNotifier::Change(const std::string& line) {
  const std::lock_guard lock(m_mutex);
  m_unsent = line;
  SendUnsent();
}

void CServiceNotifier::SendUnsent() {
  if (m_unsent.empty() || Send(m_unsent)) m_unsent.clear();
}

// False if the socket is full; any other failure is for good.
bool CServiceNotifier::Send(const std::string& text) {
  if (m_socket < 0) return true;
  const auto* address = reinterpret_cast<const sockaddr*>(&m_address);
  while (::sendto(m_socket, text.data(), text.size(), MSG_NOSIGNAL, address, m_length) < 0)
    if (errno != EINTR) return errno != EAGAIN && errno != ENOBUFS;
  return true;
}

void CServiceNotifier::Status(const std::string& text) {
  if (!IsStatusDue()) return;
  const std::lock_guard lock(m_mutex);
  m_nextStatus = Clock::now() + kStatusPause;
  if (text != m_status && Send("STATUS=" + Printable(Shortened(text.c_str(), kMostStatus)))) m_status = text;
}

bool CServiceNotifier::IsStatusDue() const {
  const std::lock_guard lock(m_mutex);
  return m_socket >= 0 && Clock::now() >= m_nextStatus;
}

void CServiceNotifier::Feed() {
  const std::lock_guard lock(m_mutex);
  SendUnsent();
  const Time now = Clock::now();
  if (m_pause == Clock::duration::zero() || now < m_nextFeed) return;
  m_nextFeed = now + (Send("WATCHDOG=1") ? m_pause : std::min<Clock::duration>(m_pause, kAgain));
}

CServiceNotifier::Time CServiceNotifier::NextFeed() const {
  const std::lock_guard lock(m_mutex);
  if (!m_unsent.empty()) return Clock::now() + kAgain;
  return m_pause == Clock::duration::zero() ? Time::max() : m_nextFeed;
}

}  // namespace vastra
