#include "host/attach/feed_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "host/common/json_text.h"
#include "host/common/shown_text.h"

namespace vastra {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kRetryPause{50};
constexpr std::size_t kPart = std::size_t{64} << 10;  // that one call reads
constexpr int kPartsAtOnce = 16;                      // in one Poll

std::string ReasonOf(int error) { return std::generic_category().message(error); }

// Why the socket cannot be connected to, with what to do where that helps.
std::string ConnectFault(const CString& path, int error) {
  struct stat status = {};
  if (error == ECONNREFUSED && ::stat(path, &status) == 0 && !S_ISSOCK(status.st_mode))
    return CString(path + " is not a socket").Std();
  if (error == ECONNREFUSED || error == ENOENT) return "no logger runs here: " + ReasonOf(error);
  if (error == EACCES) return ReasonOf(error) + ": a feed is open to the user and the group of its logger";
  return ReasonOf(error);
}

std::string RequestText(const CClientRequest& request) {
  CJson want = CJson::array({"state"});
  for (const std::string& type : request.want) want.push_back(type);
  return CJson{{"want", want}, {"interval", request.interval.count()}}.dump() + "\n";
}

}  // namespace

CFeedClient::CFeedClient(const CString& socket, const CClientRequest& request)
    : m_socket(socket),
      m_file(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)),
      m_request(RequestText(request)),
      m_deadline(Clock::now() + kGreeting),
      m_retry(Clock::now()) {
  if (m_file < 0)
    m_fault = ReasonOf(errno);
  else
    Connect();
}

CFeedClient::~CFeedClient() {
  if (m_file >= 0) ::close(m_file);
}

short CFeedClient::Events() const {
  if (!m_isConnected) return 0;
  return static_cast<short>((HasLine() ? 0 : POLLIN) | (m_request.empty() ? 0 : POLLOUT));
}

CFeedClient::Time CFeedClient::Due() const {
  return m_isConnected ? m_deadline : std::min(m_retry, m_deadline);
}

void CFeedClient::Connect() {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string& path = m_socket.Std();
  if (path.size() >= sizeof address.sun_path)
    return End("the path of the socket is longer than " + std::to_string(sizeof address.sun_path - 1) +
               " bytes");
  std::memcpy(address.sun_path, path.c_str(), path.size());
  // The logger's queue of connections is full while the call would have to wait.
  if (::connect(m_file, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
    m_isConnected = true;
  else if (errno == EAGAIN || errno == EINTR)
    m_retry = Clock::now() + kRetryPause;
  else
    End(ConnectFault(m_socket, errno));
}

void CFeedClient::Poll() {
  if (HasEnded()) return;
  if (!m_isConnected && Clock::now() >= m_retry) Connect();
  const std::size_t before = m_bytes.size();
  if (m_isConnected) Send(), Receive();
  CheckTime(m_bytes.size() > before);
}

void CFeedClient::Send() {
  if (m_request.empty()) return;
  const ssize_t sent = ::send(m_file, m_request.data(), m_request.size(), MSG_NOSIGNAL);
  if (sent > 0) m_request.erase(0, static_cast<std::size_t>(sent));
  // A logger that has closed the connection may have said why: its lines are read before it ends.
  if (sent < 0 && errno != EAGAIN && errno != EINTR) m_request.clear();
}

void CFeedClient::Receive() {
  for (int i = 0; i < kPartsAtOnce && !m_isClosed && !HasLine(); ++i) {
    const std::size_t size = m_bytes.size();
    m_bytes.resize(size + kPart);
    const ssize_t read = ::recv(m_file, m_bytes.data() + size, kPart, 0);
    const int error = errno;
    m_bytes.resize(size + static_cast<std::size_t>(std::max<ssize_t>(read, 0)));
    if (read < 0 && (error == EAGAIN || error == EINTR)) return;
    if (read <= 0) m_isClosed = true, m_fault = "the logger has closed the connection";
    FindLine();
    if (m_bytes.size() - m_begin > kMostLine && !HasLine())
      return End("a line of the feed is longer than " + std::to_string(kMostLine >> 20) + " MiB");
  }
  if (m_isClosed && !HasLine()) End(m_fault);
}

void CFeedClient::CheckTime(bool hasRead) {
  if (HasEnded() || HasLine() || hasRead || Clock::now() < m_deadline) return;
  const auto limit = m_isGreeted ? kSilence : kGreeting;
  End("the logger has not answered for " + std::to_string(limit.count()) + " seconds");
}

// Searches each byte once.
void CFeedClient::FindLine() {
  m_lineEnd = m_bytes.find('\n', std::max(m_begin, m_searched));
  m_searched = HasLine() ? m_lineEnd : m_bytes.size();
}

std::optional<CFeedEvent> CFeedClient::Take() {
  while (!HasEnded() && HasLine())
    if (std::optional<CFeedEvent> line = TakeLine()) return line;
  if (!HasEnded() && m_isClosed) End(m_fault);
  return std::nullopt;
}

// Empty for a line of a type that is not known, and for one that ends the connection.
std::optional<CFeedEvent> CFeedClient::TakeLine() {
  std::optional<CFeedEvent> line;
  m_line.assign(m_bytes, m_begin, m_lineEnd - m_begin);
  try {
    line = ParseFeedEvent(m_line);
  } catch (const CJsonFault& fault) {
    End("a line is not one of a feed: " + fault.Text().Std());
    return std::nullopt;
  }
  m_begin = m_lineEnd + 1;
  FindLine();
  if (!HasLine()) {
    m_bytes.erase(0, m_begin);
    m_begin = m_searched = 0;
    FindLine();
  }
  m_deadline = Clock::now() + kSilence;
  return Accept(std::move(line));
}

// Refuses a peer that is not a logger, or is one of a version that this reader does not know.
std::optional<CFeedEvent> CFeedClient::Accept(std::optional<CFeedEvent> line) {
  if (const auto* const error = line ? std::get_if<CErrorLine>(&*line) : nullptr) {
    End("the logger refuses: " + Printable(Shortened(error->text.c_str(), 200)));
    return std::nullopt;
  }
  const auto* const hello = line ? std::get_if<CHelloLine>(&*line) : nullptr;
  if (hello && hello->feed != kFeedVersion)
    End("the feed has version " + std::to_string(hello->feed) + ", and this program reads version " +
        std::to_string(kFeedVersion));
  else if (!hello && !m_isGreeted)
    End("the first line is not the greeting of a logger");
  if (HasEnded()) return std::nullopt;
  m_isGreeted = true;
  return line;
}

void CFeedClient::End(const std::string& fault) {
  m_fault = fault;
  ::close(m_file);
  m_file = -1;
  m_bytes.clear();
  m_lineEnd = std::string::npos;
}

}  // namespace vastra
