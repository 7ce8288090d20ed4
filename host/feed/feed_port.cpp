#include "host/feed/feed_port.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace vastra {
namespace {

using std::chrono::milliseconds;

constexpr int kAccepted = 16;                  // connections in one pass at most
constexpr milliseconds kFloodPause{10};        // after a pass with so many
constexpr milliseconds kDescriptorPause{500};  // while the process has no descriptor for a connection
constexpr int kSendBuffer = 64 << 10;          // of the system, for each reader

}  // namespace

CFeedPort::Time CFeedPort::AddPolled(Time now, std::vector<pollfd>& polled) {
  const bool accepts = now >= m_acceptDue;
  m_place = polled.size();
  polled.push_back({accepts ? m_socket.Get() : -1, POLLIN, 0});
  for (const CFeedReader& reader : m_readers) polled.push_back({reader.Get(), reader.Events(now), 0});
  m_end = polled.size();
  const Time until = accepts ? Time::max() : m_acceptDue;
  return m_readers.empty() ? until : std::min(until, m_content.RefreshedAt() + CFeedContent::kTick);
}

void CFeedPort::Work(Time now, const std::vector<pollfd>& polled) {
  if (polled[m_place].revents) Accept(now);
  const bool isTick = !m_readers.empty() && now >= m_content.RefreshedAt() + CFeedContent::kTick;
  if (isTick) m_content.Refresh(now);
  WorkAll(isTick, now, polled);
}

void CFeedPort::CloseReaders(Time now) {
  m_readers.clear();
  m_acceptDue = now + kDescriptorPause;
}

void CFeedPort::Finish(Time now) {
  m_place = m_end = 0;
  m_content.Refresh(now);
  WorkAll(true, now, {});
  m_readers.clear();
}

void CFeedPort::Accept(Time now) {
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

void CFeedPort::Admit(CDescriptor socket, Time now) {
  if (m_readers.size() >= kMostReaders) {
    const std::string line = ErrorLine("there are 64 readers already");
    ::send(socket.Get(), line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return;
  }
  ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
  if (m_readers.empty()) m_content.Refresh(now);
  m_readers.emplace_back(std::move(socket), m_content, now);
}

// areAllDue: otherwise only those that are ready. A reader that was just admitted was not polled.
void CFeedPort::WorkAll(bool areAllDue, Time now, const std::vector<pollfd>& polled) {
  std::size_t index = m_place + 1;
  for (auto reader = m_readers.begin(); reader != m_readers.end(); ++index) {
    const bool isNew = index >= m_end;
    const short ready = isNew ? short{0} : polled[index].revents;
    const bool goesOn = (!areAllDue && !isNew && !ready) || reader->Work(ready, now);
    reader = goesOn ? std::next(reader) : m_readers.erase(reader);
  }
}

}  // namespace vastra
