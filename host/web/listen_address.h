// The address and port that a server listens at: 127.0.0.1:8095, [::1]:8095.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vastra {

struct CListenAddress {
  std::string address;
  std::uint16_t port = 0;

  std::string Text() const;
  bool IsLoopback() const;
};

// Empty if text is not ADDRESS:PORT, with an address in numbers.
std::optional<CListenAddress> ParseListenAddress(const std::string& text);

// Returns a socket that listens; the port 0 becomes one that is free. Throws std::system_error.
int Listen(CListenAddress& address);

}  // namespace vastra
