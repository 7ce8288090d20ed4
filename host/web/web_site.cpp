#include "host/web/web_site.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "host/common/shown_text.h"
#include "host/web/form_values.h"
#include "host/web/web_viewer.h"

namespace vastra {
namespace {

constexpr std::string_view kLoggers = "/api/v1/loggers";
constexpr const char* kCookie = "vastra-session";

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLookAgain{5};  // whether the user of a stream still may

// On each answer: nothing comes from other sites, and no other site gets or frames anything.
constexpr std::pair<const char*, const char*> kHeaders[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; connect-src "
     "'self'; "
     "form-action 'self'; frame-ancestors 'none'; base-uri 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "same-origin"},  // without any, the form for logging in would have no origin
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

CWebAnswer Redirect(const std::string& place) {
  return {.status = 303, .type = "text/plain", .headers = {{"Location", place}}};
}

CWebAnswer TooManyAttempts() {
  CWebAnswer answer = ErrorAnswer(429, "too many attempts: wait a minute");
  answer.headers.emplace_back("Retry-After", "60");
  return answer;
}

bool IsPlain(unsigned char c) {
  return c < 0x7F && (std::isalnum(c) != 0 ||
                      std::string_view("!#$&+-.^_`|~").find(static_cast<char>(c)) != std::string_view::npos);
}

// The header for a file that is to be saved as name. Names of other characters are there twice: for all
// programs, and in UTF-8 (RFC 8187) for those that read it.
std::string Attachment(const std::string& name) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string plain, encoded;
  for (const char c : ValidUtf8(name)) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isShown = byte >= ' ' && byte < 0x7F && c != '"' && c != '\\' && c != '%' && c != '/';
    if (isShown || byte >= 0xC0 || byte < 0x80) plain += isShown ? c : '_';  // once for a character
    if (IsPlain(byte))
      encoded += c;
    else
      encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
  }
  std::string header = "attachment; filename=\"" + plain + "\"";
  return plain == name ? header : header + "; filename*=UTF-8''" + encoded;
}

// gzip in a list of encodings, unless its weight is 0.
bool AcceptsGzip(std::string_view encodings) {
  const std::size_t place = encodings.find("gzip");
  if (place == std::string_view::npos) return false;
  const std::string_view rest = encodings.substr(place + 4, encodings.find(',', place) - place - 4);
  return rest.find("q=0") == std::string_view::npos ||
         rest.find_first_of("123456789") != std::string_view::npos;
}

// The time zone of the machine, as browsers know it.
std::string ZoneName() {
  constexpr std::string_view kFolder = "zoneinfo/";
  const char* const variable = std::getenv("TZ");
  std::string name = variable ? variable : "";
  if (name.starts_with(':')) name.erase(0, 1);
  std::error_code fault;
  if (name.empty()) name = std::filesystem::canonical("/etc/localtime", fault).string();
  const std::size_t place = name.find(kFolder);
  if (place != std::string::npos) name.erase(0, place + kFolder.size());
  return name.empty() || name[0] == '/' ? "UTC" : name;
}

bool IsAddress(const std::string& host) {
  unsigned char bytes[sizeof(in6_addr)];
  return inet_pton(AF_INET, host.c_str(), bytes) == 1 || inet_pton(AF_INET6, host.c_str(), bytes) == 1;
}

// The name of a Host header, without its port.
std::string HostName(const std::string& host) {
  if (host.starts_with('[')) return host.substr(1, host.find(']') - 1);
  return host.substr(0, host.find(':'));
}

std::string Lowered(std::string name) {
  std::ranges::transform(name, name.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; });
  return name;
}

bool IsOwnAddress(const std::string& address) { return address == "::1" || address.starts_with("127."); }

bool IsOwnName(const std::string& host) {
  char own[256] = "";
  gethostname(own, sizeof own - 1);
  const std::string machine = Lowered(own), name = Lowered(host);
  return name == "localhost" || name == machine || name == machine + ".local" ||
         machine.starts_with(name + ".");
}

}  // namespace

struct CWebSite::CAsked {
  const CWebRequest& request;
  const CAddress& address;
  const std::optional<std::string>& user;
  const CWebStop& isStopped;
};

CWebSite::CWebSite(CLoggerWatch& watch, CHistoryService& history, const CPackedPage& page, CWebUsers* users,
                   CTell tell)
    : m_watch(watch), m_history(history), m_page(page), m_users(users), m_tell(std::move(tell)) {}

CWebSite::CFoundPage CWebSite::FindPage(std::string_view path) const {
  const std::size_t length = m_page.version.size() + 1;
  const bool isOfVersion = path.substr(0, 1) == "/" && path.substr(1).starts_with(m_page.version) &&
                           path.substr(length).starts_with('/');
  if (isOfVersion) path.remove_prefix(length);
  if (path == "/" && !isOfVersion) path = "/index.html";
  if (path == "/login" && !isOfVersion) path = "/login.html";
  const auto found = std::ranges::find(m_page.files, path, &CPageFile::path);
  return {found == m_page.files.end() ? nullptr : &*found, isOfVersion};
}

CWebAnswer CWebSite::History(const CAsked& asked) {
  return m_history.Answer(asked.address.what, asked.address.name, asked.request.query, asked.isStopped);
}

CWebSite::CAddress CWebSite::FindOfLogger(std::string_view rest) const {
  static constexpr std::pair<std::string_view, CRoute> kLive[] = {
      {"", &CWebSite::Logger}, {"sample", &CWebSite::Sample}, {"messages", &CWebSite::Messages}};
  const std::string_view name = rest.substr(0, rest.find('/'));
  const std::string_view what = rest.substr(std::min(name.size() + 1, rest.size()));
  if (name.empty()) return {};
  CAddress address = {.name = m_watch.NameOf(std::string(name)), .what = std::string(what)};
  for (const auto& [known, route] : kLive)
    if (known == what) address.route = route;
  if (address.route || !CHistoryService::Has(what)) return address;
  address.route = what == "variables" ? &CWebSite::Variables : &CWebSite::History;
  address.isSlow = true;
  return address;
}

CWebSite::CAddress CWebSite::Find(const CWebRequest& request) const {
  struct CRow {
    std::string_view method, path;
    CRoute route;
    bool isSlow, isOpen;
  };
  static constexpr CRow kRows[] = {
      {"POST", "/login", &CWebSite::LogIn, true, true},
      {"POST", "/logout", &CWebSite::LogOut, false, true},
      {"GET", "/api/v1/about", &CWebSite::About, false, false},
      {"GET", kLoggers, &CWebSite::Loggers, false, false},
      {"GET", "/api/v1/stream", &CWebSite::Stream, false, false},
      {"GET", "/metrics", &CWebSite::Metrics, false, false},
  };
  const std::string_view path = request.path;
  const std::string_view method = request.method == "HEAD" ? "GET" : std::string_view(request.method);
  for (const CRow& row : kRows)
    if (row.path == path && row.method == method)
      return {.route = row.route, .isSlow = row.isSlow, .isOpen = row.isOpen};
  if (method != "GET") return {};
  if (path.starts_with(kLoggers) && path.size() > kLoggers.size() && path[kLoggers.size()] == '/')
    return FindOfLogger(path.substr(kLoggers.size() + 1));
  // All files but the page itself are those of an open project.
  if (const CPageFile* file = FindPage(path).file)
    return {.route = &CWebSite::Page, .isOpen = file->path != "/index.html"};
  return {};
}

// A password takes some time to check.
bool CWebSite::IsSlow(const CWebRequest& request) const {
  return Find(request).isSlow || (m_users && !request.authorization.empty());
}

CWebAnswer CWebSite::Answer(const CWebRequest& request, const CWebStop& isStopped) {
  CWebAnswer answer = Choose(request, isStopped);
  for (const auto& [name, value] : kHeaders) answer.headers.emplace_back(name, value);
  const auto isCached = [](const auto& header) { return header.first == "Cache-Control"; };
  if (std::ranges::none_of(answer.headers, isCached))
    answer.headers.emplace_back("Cache-Control", "no-store");
  if (answer.status == 405) answer.headers.emplace_back("Allow", "GET, HEAD");
  if (!answer.file.empty()) answer.headers.emplace_back("Content-Disposition", Attachment(answer.file));
  return answer;
}

// What another site could have sent; empty: nothing.
std::string CWebSite::WhatIsForeign(const CWebRequest& request) const {
  const bool isPage = request.path == "/" || request.path == "/login";
  const bool isOwn =
      request.fetchSite.empty() || request.fetchSite == "same-origin" || request.fetchSite == "none";
  if (!isOwn && (request.IsPost() || !isPage)) return "another site has sent this request";
  if (request.IsPost() && !request.origin.empty()) {
    const std::size_t place = request.origin.find("://");
    if (place == std::string::npos || request.origin.substr(place + 3) != request.host)
      return "another site has sent this request";
  }
  // A name of another site could lead to this machine, too.
  const std::string host = HostName(request.host);
  if (!m_users && !host.empty() && !IsAddress(host) && !IsOwnName(host))
    return OneLine(Shortened(host.c_str(), 200)) + " is not a name of this machine: use its address";
  return "";
}

// By the session, or for programs, such as a monitor that reads the metrics, by name and password.
std::optional<std::string> CWebSite::UserOf(const CWebRequest& request, bool& hasToWait) {
  const auto session = m_sessions.Find(CookieOf(request.cookie, kCookie), Clock::now());
  if (session && session->hash == m_users->HashOf(session->name)) return session->name;
  const auto given = BasicCredentials(request.authorization);
  if (!given) return std::nullopt;
  const CCheck check = Check(request, given->name, given->password);
  hasToWait = check.hasToWait;
  return check.hash.empty() ? std::nullopt : std::optional(given->name);
}

// Failures of an address, and of a name, make later attempts wait.
CWebSite::CCheck CWebSite::Check(const CWebRequest& request, const std::string& name,
                                 const std::string& password) {
  const std::string viewer = ViewerKey(request.viewer);
  if (m_sessions.Try(viewer, name, Clock::now()).count() > 0) return {.hasToWait = true};
  if (!request.isEncrypted && !IsOwnAddress(request.viewer))
    std::call_once(m_isClearTold,
                   [&] { m_tell("warning: a password has come from " + request.viewer + " in the clear"); });
  CCheck check = {.hash = m_users->Check(name, password)};
  if (check.hash.empty())
    m_tell("login of " + request.viewer + " as \"" + OneLine(Shortened(name.c_str(), 64)) + "\" has failed");
  else
    m_sessions.Succeed(viewer, name);
  return check;
}

CWebAnswer CWebSite::Choose(const CWebRequest& request, const CWebStop& isStopped) {
  if (const std::string foreign = WhatIsForeign(request); !foreign.empty()) return ErrorAnswer(403, foreign);
  const CAddress address = Find(request);
  const bool isMethod = request.method == "GET" || request.method == "HEAD" || request.IsPost();
  if (!isMethod) return ErrorAnswer(405, "there is only GET");
  bool hasToWait = false;
  const std::optional<std::string> user = m_users ? UserOf(request, hasToWait) : std::nullopt;
  if (hasToWait) return TooManyAttempts();
  if (m_users && !user && !address.isOpen)
    return request.path == "/" ? Redirect("/login") : ErrorAnswer(401, "log in first");
  if (!address.route)
    return request.IsPost() ? ErrorAnswer(405, "there is only GET") : ErrorAnswer(404, "no such address");
  return (this->*address.route)({request, address, user, isStopped});
}

CWebAnswer CWebSite::Page(const CAsked& asked) {
  const auto [file, isOfVersion] = FindPage(asked.request.path);
  const bool isZipped = AcceptsGzip(asked.request.encodings);
  const std::string tag = "\"" + std::string(file->tag) + (isZipped ? "-gzip\"" : "\"");
  CWebAnswer answer = {.type = std::string(file->type)};
  answer.headers = {{"ETag", tag},
                    {"Vary", "Accept-Encoding"},
                    {"Cache-Control", isOfVersion ? "public, max-age=31536000, immutable" : "no-cache"}};
  // A server in between may have made the tag a weak one (W/), and browsers may send several.
  if (asked.request.oldTag.find(tag) != std::string::npos) {
    answer.status = 304;
    return answer;
  }
  if (isZipped) answer.headers.emplace_back("Content-Encoding", "gzip");
  answer.text = isZipped ? file->zipped : file->text;
  return answer;
}

CWebAnswer CWebSite::LogIn(const CAsked& asked) {
  if (!m_users) return Redirect("/");
  const CWebQuery form = FormValues(asked.request.body);
  const std::string name(form.Get("name").value_or("")), password(form.Get("password").value_or(""));
  const CCheck check = Check(asked.request, name, password);
  if (check.hash.empty()) return Redirect(check.hasToWait ? "/login?wait" : "/login?failed");
  CWebAnswer answer = Redirect("/");
  m_sessions.End(CookieOf(asked.request.cookie, kCookie));
  const std::string number = m_sessions.Begin(name, check.hash, Clock::now());
  answer.headers.emplace_back("Set-Cookie", std::string(kCookie) + "=" + number +
                                                "; Path=/; HttpOnly; SameSite=Strict; Max-Age=604800" +
                                                (asked.request.isEncrypted ? "; Secure" : ""));
  return answer;
}

CWebAnswer CWebSite::LogOut(const CAsked& asked) {
  m_sessions.End(CookieOf(asked.request.cookie, kCookie));
  CWebAnswer answer = Redirect("/login");
  answer.headers.emplace_back("Set-Cookie",
                              std::string(kCookie) + "=; Path=/; HttpOnly; SameSite=Strict; Max-Age=0");
  return answer;
}

CWebAnswer CWebSite::About(const CAsked& asked) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return JsonAnswer({{"version", VASTRA_VERSION},
                     {"now", std::chrono::duration_cast<std::chrono::milliseconds>(now).count()},
                     {"zone", ZoneName()},
                     {"user", asked.user ? CJson(*asked.user) : CJson()}});
}

CWebAnswer CWebSite::Loggers(const CAsked&) { return m_watch.Loggers(); }
CWebAnswer CWebSite::Logger(const CAsked& asked) { return m_watch.Logger(asked.address.name); }
CWebAnswer CWebSite::Sample(const CAsked& asked) { return m_watch.Sample(asked.address.name); }
CWebAnswer CWebSite::Metrics(const CAsked&) { return m_watch.Metrics(); }

CWebAnswer CWebSite::Variables(const CAsked& asked) {
  if (m_watch.IsFolder(asked.address.name)) return History(asked);
  return m_watch.Variables(asked.address.name, m_history.Names(asked.address.name, asked.isStopped));
}

CWebAnswer CWebSite::Messages(const CAsked& asked) {
  return m_watch.Messages(asked.address.name, asked.request.query);
}

// Whether the user of a stream that lasts is still one, looked at now and then.
std::function<bool()> CWebSite::MayStillLook(const CAsked& asked) {
  if (!asked.user) return [] { return true; };
  const std::string number = CookieOf(asked.request.cookie, kCookie);
  const std::string name = *asked.user, hash = m_users->HashOf(name);
  const bool hasSession = m_sessions.Find(number, Clock::now()).has_value();
  return [this, number, name, hash, hasSession, looked = Clock::now()]() mutable {
    const Clock::time_point now = Clock::now();
    if (now - looked < kLookAgain) return true;
    looked = now;
    return m_users->HashOf(name) == hash && (!hasSession || m_sessions.Find(number, now));
  };
}

CWebAnswer CWebSite::Stream(const CAsked& asked) {
  const CWebQuery& query = asked.request.query;
  CStreamRequest request = {query.All("sample"), query.All("message"), query.All("log")};
  constexpr std::size_t kMost = CLoggerWatch::kMostLoggers;
  for (auto* const names : {&request.samples, &request.messages, &request.logs}) {
    for (std::string& name : *names) name = m_watch.NameOf(name);
    if (names->size() > kMost)
      return ErrorAnswer(400, "a stream has at most " + std::to_string(kMost) + " loggers");
  }
  CWebAnswer answer = {.type = "text/event-stream"};
  answer.events = [this, request, may = MayStillLook(asked)](std::function<void()> onReady) -> CTakeEvents {
    auto stream = m_watch.Subscribe(request, std::move(onReady));
    if (!stream) return nullptr;
    return [stream, may](std::string& text) { return !may() || stream->Take(text); };
  };
  answer.headers.emplace_back("X-Accel-Buffering", "no");  // of a server in between
  return answer;
}

}  // namespace vastra
