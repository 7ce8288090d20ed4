#include "host/web/web_server.h"

#include <microhttpd.h>
#include <sys/socket.h>

#include <cstring>
#include <stdexcept>

#include "host/web/web_head.h"

namespace vastra {
namespace {

constexpr std::size_t kThreads = 3, kMostWaiting = 64;
constexpr unsigned kIdleSeconds = 15;
constexpr std::size_t kConnectionBytes = 32'768;  // half of them for the head of a request
constexpr std::size_t kBlock = 32'768;
constexpr std::size_t kSmall = 65'536;  // answers that are not counted
constexpr unsigned kEndedLater = 200;   // connections that were ended, and are there for a moment

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

  ssize_t Read(char* bytes, std::size_t most) try {
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
  } catch (...) {
    return MHD_CONTENT_READER_END_WITH_ERROR;
  }
};

MHD_Response* TextResponse(std::string text) {
  auto kept = std::make_unique<std::string>(std::move(text));
  const auto free = [](void* one) { delete static_cast<std::string*>(one); };
  MHD_Response* const response =
      MHD_create_response_from_buffer_with_free_callback_cls(kept->size(), kept->data(), free, kept.get());
  if (response) static_cast<void>(kept.release());
  return response;
}

MHD_Response* BodyResponse(std::unique_ptr<CBodySource> source, std::optional<std::uint64_t> size) {
  const auto read = [](void* from, std::uint64_t, char* bytes, std::size_t most) {
    return static_cast<CBodySource*>(from)->Read(bytes, most);
  };
  const auto free = [](void* from) { delete static_cast<CBodySource*>(from); };
  MHD_Response* const response =
      MHD_create_response_from_callback(size.value_or(MHD_SIZE_UNKNOWN), kBlock, read, source.get(), free);
  if (response) static_cast<void>(source.release());
  return response;
}

MHD_Response* ResponseOf(CWebAnswer& answer, const std::shared_ptr<CWebExchange>& exchange,
                         CWebWorkers& workers) {
  const bool isHead = exchange->request.IsHead();
  CTakeEvents take;
  if (answer.events && !isHead) take = answer.events([exchange] { exchange->Wake(); });
  if (answer.events && !isHead && !take) {
    CWebAnswer error = ErrorAnswer(503, "too many streams at once");
    answer.status = error.status;
    answer.type = std::move(error.type);
    answer.text = std::move(error.text);
  }
  const std::optional<std::uint64_t> size = answer.body ? answer.body->Size() : std::nullopt;
  if (!take && (!answer.body || (isHead && !size))) return TextResponse(std::move(answer.text));
  return BodyResponse(std::make_unique<CBodySource>(CBodySource{exchange, workers, std::move(take)}), size);
}

int Queue(MHD_Connection* connection, MHD_Response* response, const CWebAnswer& answer) {
  if (!response) return MHD_NO;
  MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer.type.c_str());
  for (const auto& [name, value] : answer.headers)
    MHD_add_response_header(response, name.c_str(), value.c_str());
  const MHD_Result result = MHD_queue_response(connection, static_cast<unsigned>(answer.status), response);
  MHD_destroy_response(response);
  return result;
}

// Refuses a request of which nothing more is read.
int Refuse(MHD_Connection* connection, CWebAnswer answer) {
  answer.headers.emplace_back(MHD_HTTP_HEADER_CONNECTION, "close");
  return Queue(connection, TextResponse(std::move(answer.text)), answer);
}

}  // namespace

// A request and who has sent it.
struct CWebServer::CUnderWay {
  CShared exchange;
  int socket;
  std::string counted;  // the viewer whose request this is, if a trusted server has passed it on
};

// What the library calls. No exception may leave these.
struct CWebCallbacks {
  static MHD_Result Access(void* server, MHD_Connection* connection, const char* path, const char* method,
                           const char*, const char* bytes, std::size_t* size, void** place) try {
    auto& self = *static_cast<CWebServer*>(server);
    if (!*place) return static_cast<MHD_Result>(self.Begin(connection, method, path, place));
    auto& own = *static_cast<CWebServer::CUnderWay*>(*place);
    if (*size == 0) return static_cast<MHD_Result>(self.Go(connection, own));
    std::string& body = own.exchange->request.body;  // ReadHead has seen its length
    body.append(bytes, std::min(*size, CWebRequest::kMostBody - body.size()));
    *size = 0;
    return MHD_YES;
  } catch (...) {
    return MHD_NO;
  }
  static void Completed(void* server, MHD_Connection*, void** place, MHD_RequestTerminationCode) {
    static_cast<CWebServer*>(server)->End(place);
  }
  static MHD_Result Accept(void* server, const sockaddr* address, socklen_t) try {
    auto& self = *static_cast<CWebServer*>(server);
    return self.m_connections.MakeRoom(self.CountedAs(AddressOf(address)), CWebConnections::Clock::now())
               ? MHD_YES
               : MHD_NO;
  } catch (...) {
    return MHD_NO;
  }
  static void Note(void* server, MHD_Connection* connection, void**,
                   MHD_ConnectionNotificationCode code) try {
    auto& self = *static_cast<CWebServer*>(server);
    const int socket = SocketOf(connection);
    if (code == MHD_CONNECTION_NOTIFY_STARTED)
      self.m_connections.Add(socket, self.CountedAs(AddressOf(connection)));
    else
      self.m_connections.Remove(socket);
  } catch (...) {  // without memory it is not counted
  }
  static std::size_t Decode(void*, MHD_Connection*, char* text) { return Unescape(text); }
};

CWebServer::CWebServer(const CWebServerOptions& options, CWebHandler& handler)
    : m_handler(handler),
      m_proxies(options.proxies),
      m_connections({.most = kMostConnections, .ofViewer = options.ofViewer},
                    [](int socket) { ::shutdown(socket, SHUT_RDWR); }),
      m_isEncrypted(!options.certificate.empty()),
      m_workers(kThreads) {
  unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME;
  const auto function = [](auto* one) { return reinterpret_cast<std::intptr_t>(one); };
  std::vector<MHD_OptionItem> items = {
      {MHD_OPTION_LISTEN_SOCKET, options.socket, nullptr},
      {MHD_OPTION_CONNECTION_LIMIT, kMostConnections + kEndedLater, nullptr},
      {MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds, nullptr},
      {MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionBytes, nullptr},
      {MHD_OPTION_STRICT_FOR_CLIENT, 1, nullptr},
      {MHD_OPTION_UNESCAPE_CALLBACK, function(&CWebCallbacks::Decode), nullptr},
      {MHD_OPTION_NOTIFY_CONNECTION, function(&CWebCallbacks::Note), this},
      {MHD_OPTION_NOTIFY_COMPLETED, function(&CWebCallbacks::Completed), this}};
  std::string certificate = options.certificate, key = options.key;
  std::string priorities = "NORMAL:-VERS-ALL:+VERS-TLS1.3:+VERS-TLS1.2";
  if (m_isEncrypted) {
    flags |= MHD_USE_TLS;
    items.push_back({MHD_OPTION_HTTPS_PRIORITIES, 0, priorities.data()});
    items.push_back({MHD_OPTION_HTTPS_MEM_CERT, 0, certificate.data()});
    items.push_back({MHD_OPTION_HTTPS_MEM_KEY, 0, key.data()});
  }
  items.push_back({MHD_OPTION_END, 0, nullptr});
  m_daemon = MHD_start_daemon(flags, 0, &CWebCallbacks::Accept, this, &CWebCallbacks::Access, this,
                              MHD_OPTION_ARRAY, items.data(), MHD_OPTION_END);
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

// Connections of a trusted server do not count as those of a viewer.
std::string CWebServer::CountedAs(const std::string& address) const {
  return m_proxies.Has(address) ? "" : ViewerKey(address);
}

int CWebServer::Begin(MHD_Connection* connection, const char* method, const char* path, void** place) {
  auto exchange = std::make_shared<CWebExchange>(connection);
  CWebRequest& request = exchange->request;
  request.method = method;
  request.path = path;
  if (std::optional<CWebAnswer> fault = ReadHead(connection, m_proxies, request))
    return Refuse(connection, std::move(*fault));
  request.isEncrypted = request.isEncrypted || m_isEncrypted;
  auto own = std::make_unique<CUnderWay>(CUnderWay{exchange, SocketOf(connection), {}});
  if (m_proxies.Has(AddressOf(connection))) own->counted = ViewerKey(request.viewer);
  if (!own->counted.empty() && m_viewers[own->counted] >= kMostOfViewer)
    return Refuse(connection, ErrorAnswer(503, "too many requests of this address at once"));
  const std::lock_guard lock(m_mutex);
  if (m_isStopping) return MHD_NO;
  m_exchanges.insert(std::move(exchange));
  if (!own->counted.empty()) ++m_viewers[own->counted];
  *place = own.release();
  return MHD_YES;
}

int CWebServer::Go(MHD_Connection* connection, const CUnderWay& own) {
  const CShared& exchange = own.exchange;
  if (exchange->BeginWork()) {
    m_connections.Begin(own.socket);
    if (!m_handler.IsSlow(exchange->request))
      Answer(exchange);
    else if (!m_workers.Start([this, exchange] { Answer(exchange); }, kMostWaiting))
      exchange->SetAnswer(ErrorAnswer(503, "too many requests at once"));
  }
  while (!exchange->HasAnswer()) {
    if (exchange->IsClosing()) return MHD_NO;
    if (exchange->Sleep()) return MHD_YES;
  }
  return Send(connection, own);
}

void CWebServer::Answer(const CShared& exchange) {
  try {
    exchange->SetAnswer(
        m_handler.Answer(exchange->request, [one = exchange.get()] { return one->IsStopped(); }));
  } catch (const std::bad_alloc&) {
    exchange->SetAnswer(ErrorAnswer(503, "not enough memory"));
  } catch (...) {
    exchange->SetAnswer(ErrorAnswer(500, "the answer cannot be made"));
  }
}

int CWebServer::Send(MHD_Connection* connection, const CUnderWay& own) {
  CWebAnswer& answer = own.exchange->Answer();
  const std::size_t size = answer.text.size();
  const bool isLong = answer.body || size > kSmall;
  if (isLong && !m_connections.Keep(own.socket, size, CWebConnections::Clock::now()))
    answer = ErrorAnswer(503, "too many large answers at once");
  MHD_Response* const response = ResponseOf(answer, own.exchange, m_workers);
  return Queue(connection, response, answer);
}

void CWebServer::End(void** place) {
  const std::unique_ptr<CUnderWay> own(static_cast<CUnderWay*>(*place));
  *place = nullptr;
  if (!own) return;
  own->exchange->End();
  m_connections.Finish(own->socket);
  const auto counted = m_viewers.find(own->counted);
  if (counted != m_viewers.end() && --counted->second == 0) m_viewers.erase(counted);
  const std::lock_guard lock(m_mutex);
  m_exchanges.erase(own->exchange);
}

}  // namespace vastra
