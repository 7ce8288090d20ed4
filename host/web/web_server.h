// CWebServer: HTTP/1.1 over a socket that listens, with TLS if there is a certificate. One thread serves all
// connections; what may wait for the disk is done by workers, and streams of events cost no thread.
//
// The other side can be anything: the number of connections, the length of requests, the time that a
// connection does nothing and the memory of answers that are being sent are bounded, and so is the work that
// waits. What is beyond is refused with 503. A request that another server could read in another way, with
// two lengths or names of the host for example, is refused with 400.
#pragma once

#include <set>

#include "host/web/web_connections.h"
#include "host/web/web_exchange.h"
#include "host/web/web_viewer.h"
#include "host/web/web_workers.h"

struct MHD_Daemon;

namespace vastra {

struct CWebServerOptions {
  int socket = -1;               // is closed by the server
  std::size_t ofViewer = 0;      // connections of one viewer; 0: as many as there are
  CWebProxies proxies{{}};       // of each of their viewers requests are counted in place of connections
  std::string certificate, key;  // PEM; empty: no TLS
};

class CWebServer {
 public:
  static constexpr std::size_t kMostConnections = 1000;
  static constexpr std::size_t kMostOfViewer = 200;

  // handler must exist as long as the server. Throws std::runtime_error if it cannot start.
  CWebServer(const CWebServerOptions& options, CWebHandler& handler);
  CWebServer(const CWebServer&) = delete;
  CWebServer& operator=(const CWebServer&) = delete;
  ~CWebServer();

 private:
  using CShared = std::shared_ptr<CWebExchange>;
  friend struct CWebCallbacks;

  struct CUnderWay;

  std::string CountedAs(const std::string& address) const;
  int Begin(MHD_Connection* connection, const char* method, const char* path, void** place);
  int Go(MHD_Connection* connection, const CUnderWay& own);
  void Answer(const CShared& exchange);
  int Send(MHD_Connection* connection, const CUnderWay& own);
  void End(void** place);

  CWebHandler& m_handler;
  const CWebProxies m_proxies;
  CWebConnections m_connections;
  std::map<std::string, std::size_t> m_viewers;  // of requests that trusted servers have passed on
  bool m_isEncrypted;
  CWebWorkers m_workers;
  std::mutex m_mutex;
  bool m_isStopping = false;
  std::set<CShared> m_exchanges;
  MHD_Daemon* m_daemon = nullptr;
};

}  // namespace vastra
