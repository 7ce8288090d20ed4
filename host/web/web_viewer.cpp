#include "host/web/web_viewer.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>
#include <stdexcept>

namespace vastra {
namespace {

std::string TextOf(int family, const void* address) {
  char text[INET6_ADDRSTRLEN] = "";
  inet_ntop(family, address, text, sizeof text);
  return text;
}

// The last element of a list with commas, without blanks around it; it is removed from the list.
std::string TakeLast(std::string& list) {
  const std::size_t comma = list.rfind(',');
  std::string last = comma == std::string::npos ? list : list.substr(comma + 1);
  list.resize(comma == std::string::npos ? 0 : comma);
  last.erase(0, last.find_first_not_of(" \t"));
  last.erase(last.find_last_not_of(" \t") + 1);
  return last;
}

}  // namespace

std::string PlainAddress(const std::string& text) {
  in_addr four;
  in6_addr six;
  if (inet_pton(AF_INET, text.c_str(), &four) == 1) return TextOf(AF_INET, &four);
  if (inet_pton(AF_INET6, text.c_str(), &six) != 1) return "";
  return IN6_IS_ADDR_V4MAPPED(&six) ? TextOf(AF_INET, six.s6_addr + 12) : TextOf(AF_INET6, &six);
}

std::string ViewerKey(const std::string& address) {
  in6_addr six;
  if (inet_pton(AF_INET6, address.c_str(), &six) != 1) return address;
  std::memset(six.s6_addr + 8, 0, 8);
  return TextOf(AF_INET6, &six) + "/64";
}

CWebProxies::CWebProxies(const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    const std::string address = PlainAddress(text);
    if (address.empty()) throw std::runtime_error("--proxy " + text + ": is not an address in numbers");
    m_addresses.insert(address);
  }
}

std::string CWebProxies::ViewerOf(const std::string& address, const std::string& forwarded) const {
  if (!Has(address)) return address;
  for (std::string list = forwarded; !list.empty();) {
    std::string viewer = PlainAddress(TakeLast(list));
    if (viewer.empty()) break;
    if (!Has(viewer)) return viewer;
  }
  return address;
}

bool CWebProxies::IsEncrypted(const std::string& address, const std::string& protocol) const {
  std::string list = protocol;
  return Has(address) && TakeLast(list) == "https";
}

}  // namespace vastra
