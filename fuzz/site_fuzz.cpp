// Arbitrary bytes as a request to the server, before and after the library has read its head: lines of a
// letter and a value. Without a password only the page for logging in is given away; each answer is whole,
// and its headers are lines.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/web/web_head.h"
#include "host/web/web_site.h"

namespace vastra {
namespace {

constexpr std::size_t kMostAnswer = std::size_t{1} << 20;
constexpr CPageFile kFiles[] = {{"/index.html", "text/html", "page", "page", "1"},
                                {"/login.html", "text/html", "login", "login", "2"},
                                {"/js/main.js", "text/javascript", "main", "main", "3"}};

void Require(bool holds) {
  if (!holds) std::abort();
}

// Two sites over a folder without logs: with users, of whom nobody has the password, and without.
class CFuzzSites {
 public:
  CFuzzSites() {
    Require(::mkdtemp(m_path.data()) != nullptr);
    std::ofstream(m_path + "/users") << "anna:!\nbert:$5$rounds=1000$salt$" << std::string(43, 'x') << '\n';
    m_users.emplace(m_path + "/users", [](const std::string&) {});
    m_watch.emplace(CLoggerFolders{CString(m_path), "", CString(m_path)},
                    CLoggerWatch::CFolders{{"old", m_path}});
    m_open.emplace(*m_watch, m_history, CPackedPage{"1f", kFiles}, nullptr, Tell);
    m_closed.emplace(*m_watch, m_history, CPackedPage{"1f", kFiles}, &*m_users, Tell);
  }
  ~CFuzzSites() { std::filesystem::remove_all(m_path); }

  CWebSite& Open() { return *m_open; }
  CWebSite& Closed() { return *m_closed; }

 private:
  static void Tell(const std::string& line) {
    Require(line.find_first_of(std::string_view("\r\n\0", 3)) == line.npos);
  }

  std::string m_path = "/tmp/vastra-fuzz-XXXXXX";
  std::optional<CWebUsers> m_users;
  std::optional<CLoggerWatch> m_watch;
  CHistoryService m_history{[this](const std::string& name) {
    return std::optional<CHistorySource>({name, m_watch->FoldersOf(name), true});
  }};
  std::optional<CWebSite> m_open, m_closed;
};

CWebRequest RequestOf(std::string_view text) {
  static const CWebProxies kProxies({"127.0.0.1"});
  CWebRequest request = {.method = "GET"};
  CWebQuery::CPairs pairs;
  std::string forwarded;
  std::pair<char, std::string*> fields[] = {{'m', &request.method},        {'p', &request.path},
                                            {'h', &request.host},          {'b', &request.body},
                                            {'o', &request.origin},        {'c', &request.cookie},
                                            {'a', &request.authorization}, {'s', &request.fetchSite},
                                            {'e', &request.encodings},     {'f', &forwarded},
                                            {'t', &request.oldTag}};
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (line.empty()) continue;
    for (const auto& [letter, field] : fields)
      if (letter == line[0]) *field = line.substr(1);
    if (line[0] == 'q')
      pairs.emplace_back(line.substr(1, line.find('=') - 1),
                         line.substr(std::min(line.size(), line.find('='))));
  }
  request.query = CWebQuery(std::move(pairs));
  request.path = request.path.c_str();  // as the library has it
  request.path.resize(Unescape(request.path.data()));
  request.viewer = kProxies.ViewerOf("127.0.0.1", forwarded);
  Require(PlainAddress(request.viewer) == request.viewer);
  return request;
}

void CheckAnswer(CWebAnswer answer) {
  constexpr int kKnown[] = {200, 303, 304, 400, 401, 403, 404, 405, 429};
  Require(std::ranges::find(kKnown, answer.status) != std::end(kKnown));
  for (const auto& [name, value] : answer.headers)
    for (const char c : value) Require(static_cast<unsigned char>(c) >= ' ' && c != 0x7F);
  std::string piece;
  while (answer.body && answer.body->Next(piece)) Require(!piece.empty());
  Require(answer.text.size() < kMostAnswer);
  if (answer.type == "application/json" && !answer.body && answer.status != 304)
    Require(CJson::accept(answer.text));
}

void Check(std::string_view text) {
  static CFuzzSites sites;
  const CWebRequest request = RequestOf(text);
  const CWebStop never = [] { return false; };
  CheckAnswer(sites.Open().Answer(request, never));
  CWebAnswer closed = sites.Closed().Answer(request, never);
  if (closed.status == 200) Require(closed.text == "login" || closed.text == "main");
  CheckAnswer(std::move(closed));
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
