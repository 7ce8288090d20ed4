#include "host/web/web_site.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "host/web/form_values.h"

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
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
};

CWebAnswer Redirect(const std::string& place) {
  return {.status = 303, .type = "text/plain", .headers = {{"Location", place}}};
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

CWebSite::CWebSite(CLoggerWatch& watch, CHistoryService& history, std::span<const CPageFile> pages,
                   CWebUsers* users)
    : m_watch(watch), m_history(history), m_pages(pages), m_users(users) {}

// Null: there is none.
const CPageFile* CWebSite::FindPage(std::string_view path) const {
  if (path == "/") path = "/index.html";
  if (path == "/login") path = "/login.html";
  const auto found = std::ranges::find(m_pages, path, &CPageFile::path);
  return found == m_pages.end() ? nullptr : &*found;
}

CWebAnswer CWebSite::History(const CAsked& asked) {
  return m_history.Answer(asked.address.what, asked.address.name, asked.request.query, asked.isStopped);
}

CWebSite::CAddress CWebSite::FindOfLogger(std::string_view rest) {
  static constexpr std::pair<std::string_view, CRoute> kLive[] = {
      {"", &CWebSite::Logger}, {"sample", &CWebSite::Sample}, {"messages", &CWebSite::Messages}};
  const std::string_view name = rest.substr(0, rest.find('/'));
  const std::string_view what = rest.substr(std::min(name.size() + 1, rest.size()));
  if (name.empty()) return {};
  CAddress address = {.name = std::string(name), .what = std::string(what)};
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
  if (FindPage(path)) return {.route = &CWebSite::Page, .isOpen = path != "/" && path != "/index.html"};
  return {};
}

// A password takes some time to check.
bool CWebSite::IsSlow(const CWebRequest& request) const {
  return Find(request).isSlow || (m_users && !request.authorization.empty());
}

CWebAnswer CWebSite::Answer(const CWebRequest& request, const CWebStop& isStopped) {
  CWebAnswer answer = Choose(request, isStopped);
  for (const auto& [name, value] : kHeaders) answer.headers.emplace_back(name, value);
  if (request.path.starts_with("/api/")) answer.headers.emplace_back("Cache-Control", "no-store");
  if (!answer.file.empty()) {
    std::string name = answer.file;
    std::ranges::replace_if(
        name, [](char c) { return c < ' ' || c > '~' || c == '"' || c == '\\' || c == '/'; }, '_');
    answer.headers.emplace_back("Content-Disposition", "attachment; filename=\"" + name + "\"");
  }
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
    return host + " is not a name of this machine: use its address";
  return "";
}

// By the session, or for programs, such as a monitor that reads the metrics, by name and password.
std::optional<std::string> CWebSite::UserOf(const CWebRequest& request) {
  const auto session = m_sessions.Find(CookieOf(request.cookie, kCookie), Clock::now());
  if (session && session->hash == m_users->HashOf(session->name)) return session->name;
  const auto given = BasicCredentials(request.authorization);
  if (given && Check(request, given->name, given->password) == ECheck::good) return given->name;
  return std::nullopt;
}

// Failures of an address, and of a name, make later attempts wait.
CWebSite::ECheck CWebSite::Check(const CWebRequest& request, const std::string& name,
                                 const std::string& password) {
  const std::string keys[] = {"address " + request.address, "name " + name.substr(0, 64)};
  for (const std::string& key : keys)
    if (m_sessions.Wait(key, Clock::now()).count() > 0) return ECheck::wait;
  const bool isGood = m_users->Check(name, password);
  for (const std::string& key : keys)
    if (isGood)
      m_sessions.Succeed(key);
    else
      m_sessions.Fail(key, Clock::now());
  return isGood ? ECheck::good : ECheck::failed;
}

CWebAnswer CWebSite::Choose(const CWebRequest& request, const CWebStop& isStopped) {
  if (const std::string foreign = WhatIsForeign(request); !foreign.empty()) return ErrorAnswer(403, foreign);
  const CAddress address = Find(request);
  const bool isMethod = request.method == "GET" || request.method == "HEAD" || request.IsPost();
  if (!isMethod) return ErrorAnswer(405, "there is only GET");
  const std::optional<std::string> user = m_users ? UserOf(request) : std::nullopt;
  if (m_users && !user && !address.isOpen)
    return request.path == "/" ? Redirect("/login") : ErrorAnswer(401, "log in first");
  if (!address.route)
    return request.IsPost() ? ErrorAnswer(405, "there is only GET") : ErrorAnswer(404, "no such address");
  if (request.isTooLong) return ErrorAnswer(413, "the request is too long");
  return (this->*address.route)({request, address, user, isStopped});
}

CWebAnswer CWebSite::Page(const CAsked& asked) {
  const CPageFile& file = *FindPage(asked.request.path);
  CWebAnswer answer = {.type = std::string(file.type)};
  answer.headers = {{"ETag", std::string(file.tag)}, {"Cache-Control", "no-cache"}};
  if (asked.request.oldTag == file.tag)
    answer.status = 304;
  else
    answer.text = file.text;
  return answer;
}

CWebAnswer CWebSite::LogIn(const CAsked& asked) {
  if (!m_users) return Redirect("/");
  const CWebQuery form = FormValues(asked.request.body);
  const std::string name(form.Get("name").value_or("")), password(form.Get("password").value_or(""));
  const ECheck check = Check(asked.request, name, password);
  if (check != ECheck::good) return Redirect(check == ECheck::wait ? "/login?wait" : "/login?failed");
  CWebAnswer answer = Redirect("/");
  const std::string number = m_sessions.Begin(name, m_users->HashOf(name), Clock::now());
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
  return m_watch.Variables(asked.address.name);
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
  CStreamRequest request = {query.All("sample"), query.All("message")};
  constexpr std::size_t kMost = CLoggerWatch::kMostLoggers;
  if (request.samples.size() > kMost || request.messages.size() > kMost)
    return ErrorAnswer(400, "a stream has at most " + std::to_string(kMost) + " loggers");
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
