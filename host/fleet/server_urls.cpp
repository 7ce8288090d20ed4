#include "host/fleet/server_urls.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>
#include <sstream>

#include "host/common/descriptor.h"

namespace vastra {
namespace {

constexpr const char* kPort = "4222";  // of clients

[[noreturn]] void Refuse(const std::string& shown, const char* why) {
  throw CUrlFault(shown + ": " + why + "; a server is nats://HOST:PORT or tls://HOST:PORT");
}

bool IsPort(const std::string& text) {
  unsigned number = 0;
  const char* const last = text.data() + text.size();
  const auto [end, fault] = std::from_chars(text.data(), last, number);
  return fault == std::errc() && end == last && number > 0 && number <= 65535;
}

// "[::1]:4222", "host:4222", "host".
void SetPlace(CServerUrl& server, const std::string& place, const std::string& shown) {
  const bool isBracket = place.starts_with('[');
  const std::size_t close = isBracket ? place.find(']') : 0, colon = place.find(':', close);
  if (isBracket && close == std::string::npos) Refuse(shown, "the address has no ]");
  if (isBracket && close + 1 < place.size() && colon != close + 1) Refuse(shown, "a : should follow the ]");
  if (!isBracket && colon != place.rfind(':'))
    Refuse(shown, "an address with colons needs brackets, as in [::1]");
  server.host = isBracket ? place.substr(1, close - 1) : place.substr(0, colon);
  server.port = colon == std::string::npos ? kPort : place.substr(colon + 1);
  if (server.host.empty() || server.host.find_first_of("/ ?#[]") != std::string::npos)
    Refuse(shown, "the name or address of a host is missing");
  if (!IsPort(server.port)) Refuse(shown, "the port is not a number up to 65535");
}

CServerUrl ParseServer(const std::string& text) {
  const std::size_t colon = text.find("://"), begin = colon == std::string::npos ? 0 : colon + 3;
  const std::string scheme = text.substr(0, colon == std::string::npos ? 0 : colon);
  const std::size_t at = text.rfind('@');
  const bool isSecret = at != std::string::npos && at >= begin;
  const std::string shown = text.substr(0, begin) + text.substr(isSecret ? at + 1 : begin);
  CServerUrl server;
  server.isTls = scheme == "tls";
  const bool isOther = scheme.empty() ? isSecret && text.find('/') < at : scheme != "nats" && !server.isTls;
  if (isOther) Refuse(shown, "is of another protocol");
  if (isSecret) server.secrets = text.substr(begin, at - begin);
  std::string place = text.substr(isSecret ? at + 1 : begin);
  if (place.ends_with('/')) place.pop_back();
  SetPlace(server, place, shown);
  return server;
}

// Why there is no connection to this address; 0 if there is one.
int ConnectFault(const addrinfo& address) {
  constexpr int kReachPatience = 2000;  // ms
  const CDescriptor line(
      ::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol));
  if (line.Get() < 0) return errno;
  if (::connect(line.Get(), address.ai_addr, address.ai_addrlen) == 0) return 0;
  if (errno != EINPROGRESS) return errno;
  pollfd ready = {line.Get(), POLLOUT, 0};
  if (::poll(&ready, 1, kReachPatience) <= 0) return ETIMEDOUT;
  int fault = 0;
  socklen_t size = sizeof fault;
  return ::getsockopt(line.Get(), SOL_SOCKET, SO_ERROR, &fault, &size) == 0 ? fault : errno;
}

}  // namespace

std::string CServerUrl::Shown() const {
  const std::string address = host.find(':') == std::string::npos ? host : "[" + host + "]";
  return (isTls ? "tls://" : "nats://") + address + ":" + port;
}

std::string CServerUrl::Url() const {
  std::string url = Shown();
  return secrets.empty() ? url : url.insert(url.find("://") + 3, secrets + "@");
}

std::vector<CServerUrl> ParseServers(const std::vector<std::string>& texts) {
  constexpr const char* kBlank = " \t\r\n";
  std::vector<CServerUrl> servers;
  for (const std::string& text : texts) {
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
      const std::size_t begin = part.find_first_not_of(kBlank);
      if (begin != std::string::npos)
        servers.push_back(ParseServer(part.substr(begin, part.find_last_not_of(kBlank) + 1 - begin)));
    }
  }
  if (servers.empty()) throw CUrlFault("a server is missing; one is nats://HOST:PORT or tls://HOST:PORT");
  return servers;
}

void EndConnection(int port) {
  const int most = static_cast<int>(std::min(::sysconf(_SC_OPEN_MAX), 65536L));
  for (int number = 0; number < most; ++number) {
    sockaddr_in6 place = {};  // the port is where that of the older protocol is
    socklen_t size = sizeof place;
    if (::getsockname(number, reinterpret_cast<sockaddr*>(&place), &size) == 0 &&
        (place.sin6_family == AF_INET || place.sin6_family == AF_INET6) && ntohs(place.sin6_port) == port)
      ::shutdown(number, SHUT_RDWR);
  }
}

std::string ReachFault(const CServerUrl& server) {
  addrinfo wish = {}, *list = nullptr;
  wish.ai_socktype = SOCK_STREAM;
  if (const int fault = ::getaddrinfo(server.host.c_str(), server.port.c_str(), &wish, &list); fault != 0)
    return std::string("the name of the host: ") + ::gai_strerror(fault);
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, ::freeaddrinfo);
  int fault = ENOENT;
  for (const addrinfo* one = list; one != nullptr && fault != 0; one = one->ai_next)
    fault = ConnectFault(*one);
  return fault == 0 ? "" : std::strerror(fault);
}

}  // namespace vastra
