#include "host/fleet/nats_link.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/fleet/nats_faults.h"
#include "host/fleet/server_urls.h"

namespace vastra {
namespace {

constexpr int kReconnectWait = 500, kReconnectJitter = 500, kConnectTimeout = 5000;  // ms
// A server that has stopped is left after the third ping without an answer. A chunk on a slow line must have
// passed by then, for an answer comes after it; so must a call that sends, which such a server would hold.
constexpr int kPingInterval = 10000, kUnansweredPings = 2, kWriteDeadline = 20000;
constexpr std::chrono::milliseconds kLook{20}, kAbsence{5000}, kAbsenceTold{60000};
constexpr std::chrono::milliseconds kShortestLeave{500}, kLongestLeave{10000};
constexpr int kReconnectBuffer = 1;  // nothing is kept for later: who sends asks whether it came

void Check(natsStatus status, const std::string& what) {
  if (status == NATS_OK) return;
  const char* const last = nats_GetLastError(nullptr);
  throw CNatsFault(what + ": " +
                   FaultWords(last != nullptr && *last != 0 ? last : natsStatus_GetText(status)));
}

std::string ReadSecret(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw CNatsFault(path + ": " + std::strerror(errno));
  return text.str();
}

std::vector<CServerUrl> UrlsOf(const std::vector<std::string>& servers) {
  try {
    return ParseServers(servers);
  } catch (const CUrlFault& fault) {
    throw CNatsFault(fault.what());
  }
}

std::string ShownServers(const std::vector<std::string>& servers) {
  std::string shown;
  for (const CServerUrl& url : UrlsOf(servers)) shown.append(shown.empty() ? "" : ", ").append(url.Shown());
  return shown;
}

// Nobody else can name the subjects of this connection's answers: the servers answer to any subject that a
// client gives, and a late answer to an earlier process must not count.
CNatsOptions Secret(CNatsOptions options) {
  std::array<unsigned char, 16> bytes = {};
  if (::getentropy(bytes.data(), bytes.size()) != 0)
    throw CNatsFault(std::string("random numbers: ") + std::strerror(errno));
  constexpr char kDigits[] = "0123456789abcdef";
  options.inbox += '.';
  for (const unsigned char byte : bytes) options.inbox += {kDigits[byte >> 4], kDigits[byte & 15]};
  return options;
}

class COptions {
 public:
  explicit COptions(const CNatsOptions& options) : COptions() {
    AddServers(options.servers);
    AddSecrets(options);
    Check(natsOptions_SetName(m_options, options.name.c_str()), "name");
    Check(natsOptions_SetCustomInboxPrefix(m_options, options.inbox.c_str()), "inbox");
    Check(natsOptions_SetMaxReconnect(m_options, -1), "reconnect");
    Check(natsOptions_SetReconnectWait(m_options, kReconnectWait), "reconnect");
    Check(natsOptions_SetReconnectJitter(m_options, kReconnectJitter, kReconnectJitter), "reconnect");
    Check(natsOptions_SetReconnectBufSize(m_options, kReconnectBuffer), "reconnect");
    Check(natsOptions_SetTimeout(m_options, kConnectTimeout), "time-out");
    Check(natsOptions_SetPingInterval(m_options, kPingInterval), "ping");
    Check(natsOptions_SetMaxPingsOut(m_options, kUnansweredPings), "ping");
    Check(natsOptions_SetWriteDeadline(m_options, kWriteDeadline), "deadline");
  }
  COptions(const COptions&) = delete;
  COptions& operator=(const COptions&) = delete;
  ~COptions() { natsOptions_Destroy(m_options); }

  natsOptions* Get() const { return m_options; }

 private:
  // With it the object is there, so that a fault above frees the options.
  COptions() { Check(natsOptions_Create(&m_options), "options"); }

  void AddServers(const std::vector<std::string>& servers) {
    std::vector<std::string> urls;
    bool isTls = false;
    for (const CServerUrl& server : UrlsOf(servers)) {
      urls.push_back(server.Url());
      isTls = isTls || server.isTls;
    }
    if (isTls) Check(natsOptions_SetSecure(m_options, true), "TLS");  // the library ignores tls://
    std::vector<const char*> pointers;
    pointers.reserve(urls.size());
    for (const std::string& url : urls) pointers.push_back(url.c_str());
    Check(natsOptions_SetServers(m_options, pointers.data(), static_cast<int>(pointers.size())), "--server");
  }

  void AddSecrets(const CNatsOptions& options) {
    if (!options.creds.empty()) AddCredentials(options.creds);
    for (const std::string* const file : {&options.authority, &options.certificate, &options.key})
      if (!file->empty()) ReadSecret(*file);  // says why it cannot be read; the library does not
    if (!options.authority.empty() || !options.certificate.empty())
      Check(natsOptions_SetSecure(m_options, true), "TLS");
    if (!options.authority.empty())
      Check(natsOptions_LoadCATrustedCertificates(m_options, options.authority.c_str()), options.authority);
    if (!options.certificate.empty())
      Check(natsOptions_LoadCertificatesChain(m_options, options.certificate.c_str(), options.key.c_str()),
            options.certificate);
  }

  // The library reads a file of the server's tools again for each connection.
  void AddCredentials(const std::string& path) {
    const std::string text = ReadSecret(path);
    if (text.find("BEGIN NATS USER JWT") != std::string::npos) {
      Check(natsOptions_SetUserCredentialsFromFiles(m_options, path.c_str(), nullptr), path);
      return;
    }
    const std::string line = text.substr(0, text.find_first_of("\r\n"));
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) throw CNatsFault(path + ": is neither credentials nor USER:PASSWORD");
    Check(natsOptions_SetUserInfo(m_options, line.substr(0, colon).c_str(), line.substr(colon + 1).c_str()),
          path);
  }

  natsOptions* m_options = nullptr;
};

}  // namespace

std::string InDomain(const std::string& subject, const std::string& domain) {
  constexpr std::string_view kRoot = "$JS.", kInterface = "$JS.API.";
  if (domain.empty() || !subject.starts_with(kInterface)) return subject;
  return std::string(kRoot) + domain + "." + subject.substr(kRoot.size());
}

std::string_view CNatsMessage::Reply() const {
  const char* const reply = natsMsg_GetReply(m_message.get());
  return reply == nullptr ? std::string_view() : reply;
}

std::string_view CNatsMessage::Data() const {
  return {natsMsg_GetData(m_message.get()), static_cast<std::size_t>(natsMsg_GetDataLength(m_message.get()))};
}

std::string_view CNatsMessage::Header(const char* name) const {
  const char* value = nullptr;
  return natsMsgHeader_Get(m_message.get(), name, &value) == NATS_OK && value != nullptr ? value
                                                                                         : std::string_view();
}

// With a constructor of its own the object is there, so that a fault below ends the connection.
CNatsLink::CNatsLink(CSecret wish) : m_wish(std::move(wish.options)), m_inbox(m_wish.inbox) {}

CNatsLink::CNatsLink(const CNatsOptions& options) : CNatsLink(CSecret{Secret(options)}) {
  const COptions made(m_wish);
  Check(natsOptions_SetErrorHandler(made.Get(), OnError, this), "handler");
  Check(natsOptions_SetReconnectedCB(made.Get(), OnUp, this), "handler");
  Check(natsOptions_SetDisconnectedCB(made.Get(), OnDown, this), "handler");
  Check(natsOptions_SetRetryOnFailedConnect(made.Get(), true, OnUp, this), "handler");
  const natsStatus status = natsConnection_Connect(&m_connection, made.Get());
  if (status != NATS_OK && status != NATS_NOT_YET_CONNECTED) Check(status, ShownServers(options.servers));
  if (status == NATS_OK) {
    m_connections = 1;
    NoteServer(m_connection);
  }
  Listen(m_inbox + ".a.>");  // answers to Ask have other subjects below the inbox
}

CNatsLink::~CNatsLink() {
  for (natsSubscription* const one : m_subscriptions) natsSubscription_Destroy(one);
  natsConnection_Close(m_connection);
  {  // the library destroys messages: it must be there for the last one
    const std::lock_guard guard(m_lock);
    m_isEnding = true;
    m_messages.clear();
  }
  natsConnection_Destroy(m_connection);
  constexpr std::int64_t kLongest = 10000;
  nats_CloseAndWait(kLongest);  // no call of this object comes after it
}

bool CNatsLink::IsConnected() const {
  return natsConnection_Status(m_connection) == NATS_CONN_STATUS_CONNECTED;
}

bool CNatsLink::IsSmall() const { return natsConnection_GetMaxPayload(m_connection) < m_wish.payload; }

bool CNatsLink::IsUp() const { return IsConnected() && !IsSmall(); }

unsigned CNatsLink::Connections() const {
  const std::lock_guard guard(m_lock);
  return m_connections;
}

void CNatsLink::WaitUp(std::chrono::milliseconds patience) {
  const Time until = std::chrono::steady_clock::now() + patience;
  for (; !IsUp() && std::chrono::steady_clock::now() < until; CheckOpen()) std::this_thread::sleep_for(kLook);
  if (!IsUp()) throw CNatsFault(Absence());
}

// The connection that is tried again and again does not say why it fails; another one does, and what the
// system says of each server.
std::string CNatsLink::Absence() const {
  std::string unreached;
  bool isReached = false;
  for (const CServerUrl& server : UrlsOf(m_wish.servers)) {
    const std::string why = ReachFault(server);
    isReached = isReached || why.empty();
    if (!why.empty()) unreached.append(unreached.empty() ? "" : "; ").append(server.Shown() + ": " + why);
  }
  if (!isReached) return "no connection: " + unreached;
  const std::string shown = ShownServers(m_wish.servers);
  try {
    natsConnection* trial = nullptr;
    const natsStatus status = natsConnection_Connect(&trial, COptions(m_wish).Get());
    natsConnection_Destroy(trial);
    Check(status, shown);
  } catch (const CNatsFault& fault) {
    return std::string("no connection to ") + fault.what() + (unreached.empty() ? "" : "; " + unreached);
  }
  const char* words = nullptr;
  natsConnection_GetLastError(m_connection, &words);
  return "the connection to " + shown + " was lost" +
         (words != nullptr && *words != 0 ? ": " + FaultWords(words) : " for a moment");
}

bool CNatsLink::IsLeft() const {
  const std::lock_guard guard(m_lock);
  return m_isLeft;
}

std::string CNatsLink::Server() const {
  const std::lock_guard guard(m_lock);
  return m_server;
}

// Without what is secret in the URL. It can be one that a server has told of.
void CNatsLink::NoteServer(natsConnection* connection) {
  char url[256] = "";
  natsConnection_GetConnectedUrl(connection, url, sizeof url);
  std::string server;
  try {
    server = ShownServers({url});
  } catch (const CNatsFault&) {
    server = "a server";
  }
  const std::lock_guard guard(m_lock);
  m_server = std::move(server);
  m_isLeft = natsConnection_GetMaxPayload(connection) < m_wish.payload;
}

// The library gives up after servers have refused the user twice.
void CNatsLink::CheckOpen() const {
  if (natsConnection_IsClosed(m_connection)) throw CNatsFault(Absence());
  const std::lock_guard guard(m_lock);
  if (!m_deaf.empty()) throw CNatsFault("servers: " + m_deaf);
}

// The library has no call to leave a server; it goes on with the next one, and knows also those that servers
// have told of.
void CNatsLink::LeaveSmall(Time now) {
  if (IsUp()) m_leavePause = {};
  if (!IsConnected() || !IsSmall() || !IsLeft() || now < m_leaveDue) return;
  m_leavePause = std::clamp(2 * m_leavePause, kShortestLeave, kLongestLeave);
  m_leaveDue = now + m_leavePause;
  Tell("the server " + Server() + " takes messages of " +
       std::to_string(natsConnection_GetMaxPayload(m_connection)) + " bytes at most, but a fleet needs " +
       std::to_string(m_wish.payload) + ": set its max_payload; left for another one, or tried again");
  char* address = nullptr;
  int port = 0;
  if (natsConnection_GetLocalIPAndPort(m_connection, &address, &port) == NATS_OK) EndConnection(port);
  std::free(address);
}

std::vector<std::string> CNatsLink::TakeFaults() {
  CheckOpen();
  const Time now = std::chrono::steady_clock::now();
  LeaveSmall(now);
  if (IsConnected()) m_checked = now;
  if (now - m_checked > kAbsence) {
    m_checked = now + kAbsenceTold;
    Tell(Absence());
  }
  const std::lock_guard guard(m_lock);
  return std::exchange(m_faults, {});
}

void CNatsLink::Listen(const std::string& subject) { Subscribe(subject, OnMessage); }

void CNatsLink::ListenLossy(const std::string& subject) { Subscribe(subject, OnLossy); }

void CNatsLink::Subscribe(const std::string& subject, natsMsgHandler hear) {
  natsSubscription* subscription = nullptr;
  const natsStatus status =
      natsConnection_Subscribe(&subscription, m_connection, subject.c_str(), hear, this);
  if (status == NATS_OK) m_subscriptions.push_back(subscription);
  CheckOpen();
  Check(status, subject);
  Check(natsSubscription_SetPendingLimits(subscription, -1, -1), subject);
}

bool CNatsLink::Publish(const std::string& subject, std::string_view data, const std::string& reply) {
  if (!IsUp()) return false;
  const int size = static_cast<int>(data.size());
  const std::string to = InDomain(subject, m_wish.domain);
  const natsStatus status =
      reply.empty()
          ? natsConnection_Publish(m_connection, to.c_str(), data.data(), size)
          : natsConnection_PublishRequest(m_connection, to.c_str(), reply.c_str(), data.data(), size);
  // Without a connection nothing is wrong: it is tried again.
  if (status != NATS_OK && status != NATS_CONNECTION_DISCONNECTED && status != NATS_INSUFFICIENT_BUFFER)
    Tell("a message is not sent: " + std::string(natsStatus_GetText(status)));
  return status == NATS_OK;
}

bool CNatsLink::PublishHeader(const std::string& subject, const char* header, const char* value,
                              const std::string& reply) {
  natsMsg* message = nullptr;
  if (!IsUp() || natsMsg_Create(&message, subject.c_str(), reply.c_str(), "", 0) != NATS_OK) return false;
  const CNatsMessage owner(message);
  return natsMsgHeader_Set(message, header, value) == NATS_OK &&
         natsConnection_PublishMsg(m_connection, message) == NATS_OK;
}

nlohmann::json CNatsLink::Ask(const std::string& subject, const CJson& question,
                              std::chrono::milliseconds patience) {
  const std::string text = question.is_null() ? "" : JsonText(question);
  const std::string to = InDomain(subject, m_wish.domain);
  natsMsg* answer = nullptr;
  // The servers say only to the connection, not to who asks, that a subject is not permitted.
  const auto takeDenial = [this] {
    const std::lock_guard guard(m_lock);
    return std::exchange(m_denial, {});
  };
  takeDenial();
  const natsStatus status =
      natsConnection_RequestString(&answer, m_connection, to.c_str(), text.c_str(), patience.count());
  if (const std::string denial = status == NATS_OK ? "" : takeDenial(); !denial.empty())
    throw CNatsFault("servers: " + denial);
  Check(status, to);
  const CNatsMessage owner(answer);
  try {
    nlohmann::json json = ParseJson(owner.Data());
    if (!json.is_object()) throw CNatsFault(subject + ": the answer is not an object");
    if (json.contains("error"))
      throw CNatsFault(to + ": " + FaultWords(json["error"].value("description", "an error without words")),
                       json["error"].value("err_code", 1));
    return json;
  } catch (const CJsonFault& fault) {
    throw CNatsFault(subject + ": " + fault.Text().Std());
  } catch (const nlohmann::json::exception& fault) {
    throw CNatsFault(subject + ": " + fault.what());
  }
}

std::deque<CNatsMessage> CNatsLink::Take(Time until) {
  std::unique_lock guard(m_lock);
  m_changed.wait_until(guard, until, [&] { return !m_messages.empty() || m_isWoken; });
  m_isWoken = false;
  m_lossyBytes = 0;
  return std::exchange(m_messages, {});
}

void CNatsLink::Wake() {
  const std::lock_guard guard(m_lock);
  m_isWoken = true;
  m_changed.notify_one();
}

void CNatsLink::Tell(const std::string& fault) {
  const std::lock_guard guard(m_lock);
  constexpr std::size_t kMost = 100;
  if (m_faults.size() < kMost && std::ranges::find(m_faults, fault) == m_faults.end())
    m_faults.push_back(fault);
  m_isWoken = true;
  m_changed.notify_one();
}

void CNatsLink::OnMessage(natsConnection*, natsSubscription*, natsMsg* message, void* link) {
  CNatsLink& self = *static_cast<CNatsLink*>(link);
  CNatsMessage owner(message);
  const std::lock_guard guard(self.m_lock);
  if (self.m_isEnding) return;
  self.m_messages.push_back(std::move(owner));
  self.m_changed.notify_one();
}

void CNatsLink::OnLossy(natsConnection*, natsSubscription*, natsMsg* message, void* link) {
  constexpr std::size_t kMostLossy = std::size_t{8} << 20, kFrameBytes = 512;
  CNatsLink& self = *static_cast<CNatsLink*>(link);
  CNatsMessage owner(message);
  const std::lock_guard guard(self.m_lock);
  if (self.m_isEnding || self.m_lossyBytes > kMostLossy) return;
  self.m_lossyBytes += owner.Data().size() + kFrameBytes;
  self.m_messages.push_back(std::move(owner));
  self.m_changed.notify_one();
}

void CNatsLink::OnError(natsConnection* connection, natsSubscription*, natsStatus status, void* link) {
  CNatsLink& self = *static_cast<CNatsLink*>(link);
  const char* last = nullptr;
  natsConnection_GetLastError(connection, &last);
  const std::string words = FaultWords(last != nullptr && *last != 0 ? last : natsStatus_GetText(status));
  self.Tell(words);
  const std::lock_guard guard(self.m_lock);
  if (words.starts_with(kDeniedToHear))
    self.m_deaf = words;
  else if (words.starts_with(kDenied))
    self.m_denial = words;
}

void CNatsLink::OnUp(natsConnection* connection, void* link) {
  CNatsLink& self = *static_cast<CNatsLink*>(link);
  self.NoteServer(connection);
  if (self.IsLeft()) return self.Wake();
  self.Tell("connected to " + self.Server());
  const std::lock_guard guard(self.m_lock);
  ++self.m_connections;
  self.m_isWoken = true;
  self.m_changed.notify_one();
}

void CNatsLink::OnDown(natsConnection* connection, void* link) {
  const char* words = nullptr;
  const natsStatus status = natsConnection_GetLastError(connection, &words);
  CNatsLink& self = *static_cast<CNatsLink*>(link);
  if (self.IsLeft()) return;
  self.Tell("the connection is lost: " + self.Server() +
            (status != NATS_OK && words != nullptr && *words != 0 ? ": " + FaultWords(words) : ""));
}

std::uint64_t AnswerNumber(const CNatsMessage& answer) {
  const std::string_view subject = answer.Subject();
  std::uint64_t number = 0;
  std::from_chars(subject.data() + subject.rfind('.') + 1, subject.data() + subject.size(), number);
  return number;
}

CStoredAnswer ParseStored(const CNatsMessage& answer) {
  if (answer.Header("Status") == "503")
    return {0, 503,
            "no stream takes it (for a moment at a restart; else vastra-fleet init makes the streams, in the "
            "account of this user)"};
  try {
    const nlohmann::json json = ParseJson(answer.Data());
    if (const auto error = json.find("error"); error != json.end())
      return {0, error->value("err_code", 1), error->value("description", std::string("an error"))};
    return {json.value("seq", std::uint64_t{0}), 0, ""};
  } catch (const CJsonFault& fault) {
    return {0, 1, fault.Text().Std()};
  } catch (const nlohmann::json::exception& fault) {
    return {0, 1, fault.what()};
  }
}

}  // namespace vastra
