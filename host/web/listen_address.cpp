#include "host/web/listen_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <system_error>

namespace vastra {
namespace {

constexpr int kBacklog = 256;

union CAnyAddress {
  sockaddr any;
  sockaddr_in four;
  sockaddr_in6 six;
};

socklen_t Fill(const CListenAddress& address, CAnyAddress& place) {
  std::memset(&place, 0, sizeof place);
  if (inet_pton(AF_INET, address.address.c_str(), &place.four.sin_addr) == 1) {
    place.four.sin_family = AF_INET;
    place.four.sin_port = htons(address.port);
    return sizeof place.four;
  }
  if (inet_pton(AF_INET6, address.address.c_str(), &place.six.sin6_addr) != 1) return 0;
  place.six.sin6_family = AF_INET6;
  place.six.sin6_port = htons(address.port);
  return sizeof place.six;
}

}  // namespace

std::string CListenAddress::Text() const {
  const bool isSix = address.find(':') != std::string::npos;
  return (isSix ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

bool CListenAddress::IsLoopback() const {
  CAnyAddress place;
  if (Fill(*this, place) == 0) return false;
  if (place.any.sa_family == AF_INET) return ntohl(place.four.sin_addr.s_addr) >> 24 == 127;
  return IN6_IS_ADDR_LOOPBACK(&place.six.sin6_addr);
}

std::optional<CListenAddress> ParseListenAddress(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) return std::nullopt;
  CListenAddress address = {text.substr(0, colon)};
  if (address.address.starts_with('[') && address.address.ends_with(']'))
    address.address = address.address.substr(1, address.address.size() - 2);
  const char* const end = text.data() + text.size();
  const auto [rest, fault] = std::from_chars(text.data() + colon + 1, end, address.port);
  CAnyAddress place;
  if (fault != std::errc() || rest != end || Fill(address, place) == 0) return std::nullopt;
  return address;
}

int Listen(CListenAddress& address) {
  CAnyAddress place;
  socklen_t size = Fill(address, place);
  const int file = ::socket(place.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const int on = 1;
  if (file >= 0 && ::setsockopt(file, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
      ::bind(file, &place.any, size) == 0 && ::listen(file, kBacklog) == 0 &&
      ::getsockname(file, &place.any, &size) == 0) {
    address.port = ntohs(place.any.sa_family == AF_INET ? place.four.sin_port : place.six.sin6_port);
    return file;
  }
  const int fault = errno;
  if (file >= 0) ::close(file);
  throw std::system_error(fault, std::generic_category());
}

}  // namespace vastra
