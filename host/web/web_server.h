// CWebServer: HTTP/1.1 over a socket that listens, with TLS if there is a certificate. One thread serves all
// connections; what may wait for the disk is done by workers, and streams of events cost no thread.
//
// The other side can be anything: the number of connections, the length of requests and the time that a
// connection does nothing are bounded, and so is the work that waits. What is beyond is refused with 503.
#pragma once

#include <set>

#include "host/web/web_exchange.h"
#include "host/web/web_workers.h"

struct MHD_Daemon;

namespace vastra {

struct CWebServerOptions {
  int socket = -1;               // is closed by the server
  unsigned perAddress = 0;       // connections from one address; 0: as many as there are
  std::string certificate, key;  // PEM; empty: no TLS
};

class CWebServer {
 public:
  static constexpr unsigned kMostConnections = 1000;

  // handler must exist as long as the server. Throws std::runtime_error if it cannot start.
  CWebServer(const CWebServerOptions& options, CWebHandler& handler);
  CWebServer(const CWebServer&) = delete;
  CWebServer& operator=(const CWebServer&) = delete;
  ~CWebServer();

 private:
  using CShared = std::shared_ptr<CWebExchange>;
  friend struct CWebCallbacks;

  int Begin(MHD_Connection* connection, const char* method, const char* path, void** place);
  int Go(MHD_Connection* connection, const CShared& exchange);
  void Answer(const CShared& exchange);
  int Send(MHD_Connection* connection, const CShared& exchange);
  void End(void** place);

  CWebHandler& m_handler;
  bool m_isEncrypted;
  CWebWorkers m_workers;
  std::mutex m_mutex;
  bool m_isStopping = false;
  std::set<CShared> m_exchanges;
  MHD_Daemon* m_daemon = nullptr;
};

}  // namespace vastra
