// Who asks: the address of a connection, or, behind a server in between that is trusted, the address for
// which that server asks.
#pragma once

#include <set>
#include <string>
#include <vector>

namespace vastra {

// The address in its shortest form, an IPv4 address within IPv6 as that of IPv4; empty if text is not one in
// numbers.
std::string PlainAddress(const std::string& text);

// What counts as one viewer where attempts and connections are counted: an address, of IPv6 its first half,
// because the other one is free to whoever has it.
std::string ViewerKey(const std::string& address);

class CWebProxies {
 public:
  // Throws std::runtime_error if one is not an address in numbers.
  explicit CWebProxies(const std::vector<std::string>& texts);

  bool IsEmpty() const { return m_addresses.empty(); }
  bool Has(const std::string& address) const { return m_addresses.contains(address); }
  // The last address of forwarded (X-Forwarded-For) that is not trusted, because what is before it can be
  // invented. address, that of the connection, if it is not trusted itself, or if there is no such address.
  std::string ViewerOf(const std::string& address, const std::string& forwarded) const;
  // Whether the trusted server at address has got the request by https (X-Forwarded-Proto).
  bool IsEncrypted(const std::string& address, const std::string& protocol) const;

 private:
  std::set<std::string> m_addresses;
};

}  // namespace vastra
