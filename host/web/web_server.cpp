#include "host/web/web_server.h"

#include <arpa/inet.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <stdexcept>

namespace vastra {
namespace {

constexpr std::size_t kThreads = 3, kMostWaiting = 64;
constexpr unsigned kIdleSeconds = 15;
constexpr std::size_t kConnectionBytes = 16'384;  // for the head of a request
constexpr std::size_t kBlock = 32'768;

std::string HeaderOf(MHD_Connection* connection, const char* name) {
  const char* const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value ? value : "";
}

CWebQuery QueryOf(MHD_Connection* connection) {
  CWebQuery::CPairs pairs;
  const auto add = [](void* to, MHD_ValueKind, const char* key, std::size_t keySize, const char* value,
                      std::size_t size) {
    static_cast<CWebQuery::CPairs*>(to)->emplace_back(std::string(key, keySize),
                                                      std::string(value ? value : "", value ? size : 0));
    return MHD_YES;
  };
  MHD_get_connection_values_n(connection, MHD_GET_ARGUMENT_KIND, add, &pairs);
  return CWebQuery(std::move(pairs));
}

std::string AddressOf(MHD_Connection* connection) {
  const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  if (!info || !info->client_addr) return "";
  const sockaddr* const address = info->client_addr;
  char text[INET6_ADDRSTRLEN] = "";
  if (address->sa_family == AF_INET)
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text, sizeof text);
  else if (address->sa_family == AF_INET6)
    inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr, text, sizeof text);
  return text;
}

// What a response reads its body from.
struct CBodySource {
  std::shared_ptr<CWebExchange> exchange;
  CWebWorkers& workers;
  CTakeEvents take = {};
  std::string piece = {};
  std::size_t sent = 0;
  bool isAsked = false;  // a worker makes the next piece

  // Gets the next piece: true; false: none at the moment. end: what the library is told if there is none any
  // more, or 0.
  bool NextPiece(ssize_t& end) {
    piece.clear();
    sent = 0;
    if (take) {
      if (!take(piece)) return false;
      if (piece.empty()) end = MHD_CONTENT_READER_END_OF_STREAM;
      return !piece.empty();
    }
    const CWebExchange::EPiece state = exchange->TakePiece(piece);
    if (state == CWebExchange::EPiece::last) end = MHD_CONTENT_READER_END_OF_STREAM;
    if (state == CWebExchange::EPiece::broken) end = MHD_CONTENT_READER_END_WITH_ERROR;
    if (state == CWebExchange::EPiece::there) {
      isAsked = false;
      return true;
    }
    if (end == 0 && !std::exchange(isAsked, true))
      workers.Start([one = exchange] { one->MakePiece(); }, SIZE_MAX);
    return false;
  }

  ssize_t Read(char* bytes, std::size_t most) {
    while (sent == piece.size()) {
      ssize_t end = 0;
      if (NextPiece(end)) continue;
      if (end != 0) return end;
      if (exchange->IsClosing()) return MHD_CONTENT_READER_END_WITH_ERROR;
      if (exchange->Sleep()) return 0;
    }
    const std::size_t count = std::min(most, piece.size() - sent);
    std::memcpy(bytes, piece.data() + sent, count);
    sent += count;
    return static_cast<ssize_t>(count);
  }
};

MHD_Response* ResponseOf(CWebAnswer& answer, const std::shared_ptr<CWebExchange>& exchange,
                         CWebWorkers& workers) {
  CTakeEvents take;
  if (answer.events) take = answer.events([exchange] { exchange->Wake(); });
  if (answer.events && !take) {
    const CWebAnswer error = ErrorAnswer(503, "too many streams at once");
    answer.status = error.status;
    answer.type = error.type;
    answer.text = error.text;
  }
  if (!take && !answer.body)
    return MHD_create_response_from_buffer(answer.text.size(), answer.text.data(), MHD_RESPMEM_MUST_COPY);
  auto source = std::make_unique<CBodySource>(CBodySource{exchange, workers, std::move(take)});
  const auto read = [](void* from, std::uint64_t, char* bytes, std::size_t most) {
    return static_cast<CBodySource*>(from)->Read(bytes, most);
  };
  const auto free = [](void* from) { delete static_cast<CBodySource*>(from); };
  return MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, read, source.release(), free);
}

}  // namespace

// What the library calls.
struct CWebCallbacks {
  static MHD_Result Access(void* server, MHD_Connection* connection, const char* path, const char* method,
                           const char*, const char* bytes, std::size_t* size, void** place) {
    auto& self = *static_cast<CWebServer*>(server);
    if (!*place) return static_cast<MHD_Result>(self.Begin(connection, method, path, place));
    const auto& exchange = *static_cast<CWebServer::CShared*>(*place);
    if (*size > 0) {
      CWebRequest& request = exchange->request;
      if (request.body.size() + *size <= CWebRequest::kMostBody)
        request.body.append(bytes, *size);
      else
        request.isTooLong = true;
      *size = 0;
      return MHD_YES;
    }
    return static_cast<MHD_Result>(self.Go(connection, exchange));
  }
  static void Completed(void* server, MHD_Connection*, void** place, MHD_RequestTerminationCode) {
    static_cast<CWebServer*>(server)->End(place);
  }
};

CWebServer::CWebServer(const CWebServerOptions& options, CWebHandler& handler)
    : m_handler(handler), m_isEncrypted(!options.certificate.empty()), m_workers(kThreads) {
  unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME;
  std::vector<MHD_OptionItem> items = {
      {MHD_OPTION_LISTEN_SOCKET, options.socket, nullptr},
      {MHD_OPTION_CONNECTION_LIMIT, kMostConnections, nullptr},
      {MHD_OPTION_PER_IP_CONNECTION_LIMIT, static_cast<std::intptr_t>(options.perAddress), nullptr},
      {MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, nullptr},
      {MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionBytes, nullptr},
      {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
      {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<std::intptr_t>(&CWebCallbacks::Completed), this}};
  std::string certificate = options.certificate, key = options.key;
  if (m_isEncrypted) {
    flags |= MHD_USE_TLS;
    items.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, certificate.data()});
    items.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, key.data()});
  }
  items.push_back({MHD_OPTION_END, 0, nullptr});
  m_daemon = MHD_start_daemon(flags, 0, nullptr, nullptr, &CWebCallbacks::Access, this, MHD_OPTION_ARRAY,
                              items.data(), MHD_OPTION_END);
  if (!m_daemon)
    throw std::runtime_error(m_isEncrypted ? "the server does not start: is the certificate that of the key?"
                                           : "the server does not start");
}

// Connections that sleep have to be woken before the library ends them.
CWebServer::~CWebServer() {
  {
    const std::lock_guard lock(m_mutex);
    m_isStopping = true;
  }
  m_workers.Stop();
  {
    const std::lock_guard lock(m_mutex);
    for (const CShared& exchange : m_exchanges) exchange->Close();
  }
  MHD_stop_daemon(m_daemon);
}

int CWebServer::Begin(MHD_Connection* connection, const char* method, const char* path, void** place) {
  auto exchange = std::make_shared<CWebExchange>(connection);
  CWebRequest& request = exchange->request;
  request.method = method;
  request.path = path;
  request.query = QueryOf(connection);
  request.host = HeaderOf(connection, MHD_HTTP_HEADER_HOST);
  request.origin = HeaderOf(connection, MHD_HTTP_HEADER_ORIGIN);
  request.cookie = HeaderOf(connection, MHD_HTTP_HEADER_COOKIE);
  request.authorization = HeaderOf(connection, MHD_HTTP_HEADER_AUTHORIZATION);
  request.oldTag = HeaderOf(connection, MHD_HTTP_HEADER_IF_NONE_MATCH);
  request.fetchSite = HeaderOf(connection, "Sec-Fetch-Site");
  request.address = AddressOf(connection);
  request.isEncrypted = m_isEncrypted;
  const std::lock_guard lock(m_mutex);
  if (m_isStopping) return MHD_NO;
  *place = new CShared(exchange);
  m_exchanges.insert(std::move(exchange));
  return MHD_YES;
}

int CWebServer::Go(MHD_Connection* connection, const CShared& exchange) {
  if (exchange->BeginWork()) {
    if (!m_handler.IsSlow(exchange->request))
      Answer(exchange);
    else if (!m_workers.Start([this, exchange] { Answer(exchange); }, kMostWaiting))
      exchange->SetAnswer(ErrorAnswer(503, "too many requests at once"));
  }
  while (!exchange->HasAnswer()) {
    if (exchange->IsClosing()) return MHD_NO;
    if (exchange->Sleep()) return MHD_YES;
  }
  return Send(connection, exchange);
}

void CWebServer::Answer(const CShared& exchange) {
  try {
    exchange->SetAnswer(
        m_handler.Answer(exchange->request, [one = exchange.get()] { return one->IsStopped(); }));
  } catch (const std::exception& fault) {
    exchange->SetAnswer(ErrorAnswer(500, fault.what()));
  }
}

int CWebServer::Send(MHD_Connection* connection, const CShared& exchange) {
  CWebAnswer& answer = exchange->Answer();
  MHD_Response* const response = ResponseOf(answer, exchange, m_workers);
  if (!response) return MHD_NO;
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.type.c_str());
  for (const auto& [name, value] : answer.headers)
    MHD_add_response_header(response, name.c_str(), value.c_str());
  const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
  MHD_destroy_response(response);
  return result;
}

void CWebServer::End(void** place) {
  auto* const own = static_cast<CShared*>(*place);
  if (!own) return;
  (*own)->End();
  {
    const std::lock_guard lock(m_mutex);
    m_exchanges.erase(*own);
  }
  delete own;
  *place = nullptr;
}

}  // namespace vastra
