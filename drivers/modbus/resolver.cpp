#include "resolver.h"

#include <netdb.h>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

#include "library.h"

namespace modbus {

CResolver::CAnswer CResolver::Ask(const std::string& host, const std::string& port, int flags) {
  addrinfo wanted = {};
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = AI_NUMERICSERV | flags;
  addrinfo* list = nullptr;
  CAnswer answer;
  if (const int error = ::getaddrinfo(host.c_str(), port.c_str(), &wanted, &list); error != 0)
    answer.fault = ::gai_strerror(error);
  for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
    CAddress& address = answer.addresses.emplace_back();
    address.size = std::min(entry->ai_addrlen, static_cast<socklen_t>(sizeof address.address));
    std::memcpy(&address.address, entry->ai_addr, address.size);
  }
  if (list) ::freeaddrinfo(list);
  return answer;
}

CResolver::CResolver(std::string host, std::string port)
    : m_host(std::move(host)),
      m_port(std::move(port)),
      m_addresses(Ask(m_host, m_port, AI_NUMERICHOST).addresses),
      m_isNumeric(!m_addresses.empty()) {}

void CResolver::Forget() {
  if (!m_isNumeric) m_addresses.clear();
}

CResult CResolver::Resolve(CTime until) {
  if (!m_addresses.empty()) return {};
  try {
    if (!m_question.valid()) m_question = std::async(std::launch::async, Ask, m_host, m_port, 0);
  } catch (const std::system_error&) {  // the system has no thread left
    return Lost("names cannot be looked up now");
  }
  if (m_question.wait_until(until) != std::future_status::ready)
    return Pending("its name is being looked up");
  CAnswer answer = m_question.get();
  m_addresses = std::move(answer.addresses);
  return m_addresses.empty() ? Lost("the name \"" + m_host + "\" has no address: " + answer.fault)
                             : CResult();
}

}  // namespace modbus
