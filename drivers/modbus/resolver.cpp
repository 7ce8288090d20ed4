#include "resolver.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "library.h"

namespace modbus {
namespace {

std::vector<CAddress> ToAddresses(addrinfo* list) {
  std::vector<CAddress> addresses;
  for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
    CAddress& address = addresses.emplace_back();
    address.size = std::min(entry->ai_addrlen, static_cast<socklen_t>(sizeof address.address));
    std::memcpy(&address.address, entry->ai_addr, address.size);
  }
  if (list) ::freeaddrinfo(list);
  return addresses;
}

}  // namespace

CResolver::CResolver(std::string host, std::string port) : m_host(std::move(host)), m_port(std::move(port)) {
  m_wanted.ai_socktype = SOCK_STREAM;
  m_wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* list = nullptr;
  m_isNumeric = ::getaddrinfo(m_host.c_str(), m_port.c_str(), &m_wanted, &list) == 0;
  if (m_isNumeric) m_addresses = ToAddresses(list);
  m_wanted.ai_flags = AI_NUMERICSERV;
}

CResolver::~CResolver() {
  if (!m_question) return;
  const gaicb* question = m_question.get();
  while (::gai_cancel(m_question.get()) == EAI_NOTCANCELED) ::gai_suspend(&question, 1, nullptr);
  if (::gai_error(m_question.get()) == 0) ::freeaddrinfo(m_question->ar_result);
}

void CResolver::Forget() {
  if (!m_isNumeric) m_addresses.clear();
}

void CResolver::Ask() {
  m_question = std::make_unique<gaicb>();
  m_question->ar_name = m_host.c_str();
  m_question->ar_service = m_port.c_str();
  m_question->ar_request = &m_wanted;
  gaicb* question = m_question.get();
  if (::getaddrinfo_a(GAI_NOWAIT, &question, 1, nullptr) != 0) m_question.reset();
}

CResult CResolver::Take(int error) {
  const std::unique_ptr<gaicb> question = std::move(m_question);
  if (error == 0) m_addresses = ToAddresses(question->ar_result);
  if (!m_addresses.empty()) return {};
  return Lost("the name \"" + m_host + "\" has no address: " + ::gai_strerror(error ? error : EAI_NONAME));
}

CResult CResolver::Resolve(CTime until) {
  if (!m_addresses.empty()) return {};
  if (!m_question) Ask();
  if (!m_question) return Lost("names cannot be looked up now");
  const auto left = std::max(CClock::duration(0), until - CClock::now());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
  const timespec wait = {seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  const gaicb* question = m_question.get();
  ::gai_suspend(&question, 1, &wait);
  const int error = ::gai_error(m_question.get());
  if (error != EAI_INPROGRESS) return Take(error);
  CResult result = Lost("its name is being looked up");
  result.pending = true;
  return result;
}

}  // namespace modbus
