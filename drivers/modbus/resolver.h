// CResolver finds the network addresses of a host by its name, without holding up its caller.
#pragma once

#include <netdb.h>
#include <sys/socket.h>

#include <memory>
#include <string>
#include <vector>

#include "line.h"

namespace modbus {

struct CAddress {
  sockaddr_storage address;
  socklen_t size;
};

class CResolver {
 public:
  CResolver(std::string host, std::string port);
  CResolver(const CResolver&) = delete;
  CResolver& operator=(const CResolver&) = delete;
  // A question that has been sent is waited for: the system gives up on it by itself.
  ~CResolver();

  // Goes on until `until` at most. Good: Addresses has one at least.
  CResult Resolve(CTime until);
  const std::vector<CAddress>& Addresses() const { return m_addresses; }
  // The next Resolve asks again, unless the host is an address itself.
  void Forget();

 private:
  void Ask();
  CResult Take(int error);

  const std::string m_host, m_port;
  addrinfo m_wanted = {};
  bool m_isNumeric = false;
  std::vector<CAddress> m_addresses;
  std::unique_ptr<gaicb> m_question;  // while it is under way
};

}  // namespace modbus
