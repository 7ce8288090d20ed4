// Arbitrary bytes as a request for the history of a folder with a log: "operation?name=value&name=value".
// Each answer is JSON or a body within its bounds, and no file is sent but the log that is listed.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/common/json_text.h"
#include "host/web/history_service.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra {
namespace {

constexpr std::size_t kMostAnswer = std::size_t{16} << 20;

void Require(bool holds) {
  if (!holds) std::abort();
}

// A folder with a log of two variables and, beside it, a file that must not be sent.
class CFuzzFolder {
 public:
  CFuzzFolder() {
    Require(::mkdtemp(m_path.data()) != nullptr);
    std::filesystem::create_directory(m_path + "/logs");
    std::ofstream(m_path + "/secret") << "secret";
    std::filesystem::create_symlink(m_path + "/secret", m_path + "/logs/link.rph");
    CStringArray names;
    names.Add("a");
    names.Add("b");
    CLogWriter writer;
    writer.SetNames(names);
    CSampleStore store;
    for (int i = 0; i < 500; ++i) {
      const float values[] = {static_cast<float>(i) / 8, i % 9 ? -0.0f : 1.0f / 0.0f};
      _timeb time;
      time.time = i / 3;
      store.Append(time, reinterpret_cast<const char*>(values), 2);
    }
    CFile file(CString(m_path + "/logs/x.rph"), CFile::modeCreate | CFile::modeWrite);
    writer.Write(file, store);
  }
  ~CFuzzFolder() { std::filesystem::remove_all(m_path); }

  std::string Logs() const { return m_path + "/logs"; }

 private:
  std::string m_path = "/tmp/vastra-fuzz-XXXXXX";
};

CHistoryService& Service() {
  static const CFuzzFolder folder;
  static CHistoryService service([](const std::string& name) {
    return std::optional<CHistorySource>({name, {folder.Logs()}, true});
  });
  return service;
}

CWebQuery QueryOf(std::string_view text) {
  CWebQuery::CPairs pairs;
  while (!text.empty()) {
    const std::string_view pair = text.substr(0, text.find('&'));
    text.remove_prefix(std::min(text.size(), pair.size() + 1));
    const std::size_t name = std::min(pair.size(), pair.find('='));
    pairs.emplace_back(pair.substr(0, name), pair.substr(std::min(pair.size(), name + 1)));
  }
  return CWebQuery(std::move(pairs));
}

void CheckBody(CWebBody& body) {
  std::string piece;
  std::size_t size = 0;
  while (body.Next(piece)) {
    Require(!piece.empty() && piece != "secret");
    Require((size += piece.size()) < kMostAnswer);
  }
  Require(!body.IsIncomplete());
}

void Check(std::string_view text) {
  constexpr const char* kAnswers[] = {"range", "variables", "rows",    "buckets", "gaps",
                                      "logs",  "log",       "log.csv", "rows.csv"};
  if (text.empty()) return;
  const auto which = static_cast<unsigned char>(text[0] - '0') % std::size(kAnswers);
  const CWebAnswer answer = Service().Answer(kAnswers[which], "kiln", QueryOf(text.substr(1)));
  Require(answer.status == 200 || answer.status == 400 || answer.status == 404);
  if (answer.body) return CheckBody(*answer.body);
  Require(answer.text.size() < kMostAnswer && answer.text.find('\n') == answer.text.size() - 1);
  Require(ParseJson(answer.text).contains("error") == (answer.status != 200));
}

}  // namespace
}  // namespace vastra

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  vastra::Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
