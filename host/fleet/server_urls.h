// The URLs of the servers, as a command line has them.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace vastra {

struct CServerUrl {
  bool isTls = false;
  std::string secrets;  // what is before an "@": it can be a password
  std::string host, port;

  std::string Url() const;
  std::string Shown() const;  // without the secrets
};

class CUrlFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Each text is an URL, or a list with commas. Throws CUrlFault for what is not nats:// or tls://, a host and
// a port.
std::vector<CServerUrl> ParseServers(const std::vector<std::string>& texts);

// Ends the connection of this process that has this port of its own.
void EndConnection(int port);

// Tries to connect, without a word to the server. Why it cannot; empty if it can.
std::string ReachFault(const CServerUrl& server);

}  // namespace vastra
