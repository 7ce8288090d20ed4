#include "tcp_line.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

namespace modbus {
namespace {

// A connection that was begun and not used for this time is made again.
constexpr milliseconds kForgotten{1000};

std::string Within(milliseconds time) { return " within " + std::to_string(time.count()) + " ms"; }

// A request that a working device answers: for the first register or bit of the node.
CFrame ProofOf(const CSettings& settings) {
  CRequest request = {settings.requests.front().kind, settings.requests.front().first, 1, {}};
  return ReadFrame(request);
}

}  // namespace

// The library gets a connected socket later. Its context needs an address, which is not used.
CTcpLine::CTcpLine(const std::string& host, const std::string& port)
    : m_resolver(host, port), m_context(Take(modbus_new_tcp("127.0.0.1", MODBUS_TCP_DEFAULT_PORT))) {}

void CTcpLine::Hang() {
  if (m_socket >= 0) ::close(m_socket);
  m_socket = -1;
}

void CTcpLine::Drop() {
  Hang();
  m_step = 0;
  m_begun.reset();
  m_asked = false;
}

int CTcpLine::Peek() const {
  char byte = 0;
  const ssize_t size = ::recv(m_socket, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT);
  if (size > 0) return 1;
  return size < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : -1;
}

bool CTcpLine::IsAwaited() const {
  return m_resolver.Addresses().empty() || (m_socket >= 0 && !WaitFor(m_socket, POLLOUT, CClock::now()));
}

bool CTcpLine::HasClosed() const {
  char byte = 0;
  return m_socket >= 0 && ::recv(m_socket, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) == 0;
}

bool CTcpLine::IsConnected() {
  if (m_step != kConnected) return false;
  if (Peek() < 0) Drop();
  return m_step == kConnected;
}

// For a device that answers: waits for the whole time-out.
CResult CTcpLine::ConnectAnew(const CSettings& settings, bool wary) {
  Drop();
  return TakeSteps(settings, {CClock::now() + settings.timeOut + settings.connectPause, wary});
}

CResult CTcpLine::Connect(const CSettings& settings, CTime until, bool wary) {
  const CClock::duration forgotten = settings.timeOut + settings.connectPause + kForgotten;
  if (m_begun && !wary && CClock::now() - *m_begun > forgotten && !IsAwaited()) Drop();
  // A wary attempt continues, however old it is: if scans are far apart and the device is slow, a new attempt
  // would not get further. If the device has closed the idle connection meanwhile, the device works.
  if (m_begun && wary && HasClosed()) return ConnectAnew(settings, wary);
  return TakeSteps(settings, {until, wary});
}

CResult CTcpLine::TakeSteps(const CSettings& settings, const CPatience& patience) {
  if (!m_begun) m_begun = CClock::now();
  while (m_step < kConnected) {
    const CStep step = kSteps[m_step];
    CResult result = (this->*step)(settings, patience);
    if (result.pending) return result;
    if (!result.IsGood()) {
      Drop();
      m_resolver.Forget();
      return result;
    }
    ++m_step;
    m_begun = CClock::now();
  }
  return {};
}

CResult CTcpLine::UntilDeadline(CResult result, const CSettings& settings, const char* words) const {
  if (!result.pending || CClock::now() < *m_begun + settings.timeOut) return result;
  return Lost(words + Within(settings.timeOut));
}

CResult CTcpLine::Resolve(const CSettings& settings, const CPatience& patience) {
  const CTime until = std::min(patience.until, *m_begun + settings.timeOut);
  return UntilDeadline(m_resolver.Resolve(until), settings, "its name was not found");
}

CResult CTcpLine::Dial(const CSettings& settings, const CPatience& patience) {
  const std::vector<CAddress>& addresses = m_resolver.Addresses();
  const CTime until = std::min(patience.until, *m_begun + settings.timeOut);
  CResult result;
  for (std::size_t tried = 0; tried < addresses.size(); ++tried) {
    m_next %= addresses.size();
    if (m_socket < 0) result = BeginDialling(addresses[m_next]);
    if (result.IsGood()) result = DialOutcome(until);
    result = UntilDeadline(result, settings, "no connection");
    if (result.IsGood() || result.pending) break;
    Hang();
    ++m_next;
    if (CClock::now() >= *m_begun + settings.timeOut) break;  // the next attempt begins with the next address
    if (tried + 1 < addresses.size()) result = {};
  }
  return result;
}

CResult CTcpLine::BeginDialling(const CAddress& address) {
  m_socket = ::socket(address.address.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (m_socket < 0) return Lost(SystemWords(errno));
  if (!IsWaitable(m_socket)) return Lost("this program has too many files open");
  const int noDelay = 1;
  ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
  const auto* where = reinterpret_cast<const sockaddr*>(&address.address);
  if (::connect(m_socket, where, address.size) == 0 || errno == EINPROGRESS || errno == EINTR) return {};
  return Lost("no connection: " + SystemWords(errno));
}

CResult CTcpLine::DialOutcome(CTime until) {
  if (!WaitFor(m_socket, POLLOUT, until)) return Pending("the connection is being made");
  int error = 0;
  socklen_t size = sizeof error;
  ::getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) return Lost("no connection: " + SystemWords(error));
  modbus_set_socket(m_context.get(), m_socket);
  return {};
}

CResult CTcpLine::Settle(const CSettings& settings, const CPatience& patience) {
  const CTime ready = *m_begun + settings.connectPause;
  std::this_thread::sleep_until(std::min(ready, patience.until));
  return CClock::now() < ready ? Pending("the pause after connecting is not over") : CResult();
}

CResult CTcpLine::Prove(const CSettings& settings, const CPatience& patience) {
  if (!patience.wary) return {};
  const CFrame proof = ProofOf(settings);
  if (!m_asked)
    if (CResult sent = Send(settings.unit, proof); !sent.IsGood()) return sent;
  m_asked = true;
  const CTime deadline = *m_begun + settings.timeOut;
  CFrame reply;
  CResult result = TakeReply(settings.unit, proof, std::min(patience.until, deadline), deadline, reply);
  if (result.pending && CClock::now() >= deadline) result = NoReply(settings);
  return result;
}

CResult CTcpLine::Exchange(const CSettings& settings, const CFrame& request, CFrame& reply) {
  const bool isProven = std::exchange(m_asked, false);
  CResult result = Ask(settings, request, reply);
  if (!result.IsGood()) Drop();
  // Some devices close the connection a little after each reply, as here after the proof. Without a second
  // attempt such a device would never be reached again.
  if (isProven && result.status == statusExtendedError) {
    result = Ask(settings, request, reply);
    if (!result.IsGood()) Drop();
  }
  return result;
}

CResult CTcpLine::Ask(const CSettings& settings, const CFrame& request, CFrame& reply) {
  const int waiting = m_step == kConnected ? Peek() : -1;
  if (waiting > 0) return BadFrame("it came without a request");
  if (waiting < 0)  // the device may have closed after the check, as some do after each reply
    if (CResult again = ConnectAnew(settings, false); !again.IsGood()) return again;
  if (CResult sent = Send(settings.unit, request); !sent.IsGood()) return sent;
  const CTime deadline = CClock::now() + settings.timeOut;
  const CResult result = TakeReply(settings.unit, request, deadline, deadline, reply);
  return result.pending ? NoReply(settings) : result;
}

CResult CTcpLine::Send(int unit, const CFrame& request) {
  ++m_number;
  const CPacket packet = TcpPacket(m_number, unit, request);
  const auto size = static_cast<std::size_t>(packet.size);
  const ssize_t sent = ::send(m_socket, packet.bytes.data(), size, MSG_NOSIGNAL);
  return sent == static_cast<ssize_t>(size) ? CResult() : Lost("the device closed the connection");
}

CResult CTcpLine::TakeReply(int unit, const CFrame& request, CTime until, CTime deadline, CFrame& reply) {
  const short came = WaitFor(m_socket, POLLIN | POLLRDHUP, until);
  if (!came) return Pending("it is being asked again");
  const bool hasBegun = came == POLLIN || Peek() > 0;
  CPacket packet;
  if (CResult received = Receive(m_context.get(), deadline, packet); !received.IsGood())
    return hasBegun && received.status == statusExtendedError
               ? BadFrame("it is cut short, the device closed the connection")
               : received;
  const std::string fault = TakeTcpReply(packet, m_number, unit, request, reply);
  return fault.empty() ? CResult() : BadFrame(fault);
}

}  // namespace modbus
