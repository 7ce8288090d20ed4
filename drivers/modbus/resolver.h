// CResolver finds the network addresses of a host by its name without blocking its caller.
#pragma once

#include <sys/socket.h>

#include <future>
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

  // Goes on until `until` at most. Good: Addresses has one at least.
  CResult Resolve(CTime until);
  const std::vector<CAddress>& Addresses() const { return m_addresses; }
  // The next Resolve asks again, unless the host is an address itself.
  void Forget();

 private:
  struct CAnswer {
    std::vector<CAddress> addresses;
    std::string fault;  // if there are none
  };
  static CAnswer Ask(const std::string& host, const std::string& port, int flags);

  const std::string m_host, m_port;
  std::vector<CAddress> m_addresses;
  const bool m_isNumeric;
  // The question to the system, while it runs. The destructor waits for it; the system has a time-out.
  std::future<CAnswer> m_question;
};

}  // namespace modbus
