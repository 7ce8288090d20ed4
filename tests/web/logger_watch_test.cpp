// The live side of the web server, on feeds that say what a test wants, also what no logger says.
#include "host/web/logger_watch.h"

#include <gtest/gtest.h>

#include <list>
#include <nlohmann/json.hpp>

#include "tests/support/files.h"
#include "tests/web/said_feed.h"

namespace vastra {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

// What the feed of a process says first.
std::string Said(int pid, const json& variables = {"x", "y", "up"}) {
  json hello = json::parse(R"({"type": "hello", "feed": 1, "started": [1, 0, 0, 0], "period": 500,
"units": [{"variable": "y", "unit": "K"}],
"stages": {"nodes": ["N"], "origins": [{"variables": ["y"], "alive": "up"}],
           "outputs": [{"name": "A", "folder": "/a"}, {"name": "B", "folder": "b"}],
           "summaries": [{"name": "C", "folder": "/a"}]}})");
  hello["pid"] = pid;
  hello["variables"] = variables;
  return hello.dump() + R"(
{"type": "state", "state": "running", "lastSample": [9, 5, 0, 0], "lastSampleAge": 3}
{"type": "counts", "read": 7}
)";
}
std::string Message(int number, const std::string& text = "away") {
  return R"({"type": "message", "severity": "error", "number": )" + std::to_string(number) +
         R"(, "text": ")" + text + "\"}\n";
}
std::string Sample(int number, const char* values) {
  return R"({"type": "sample", "time": [9, )" + std::to_string(number) + R"(, 0, 0], "number": )" +
         std::to_string(number) + R"(, "values": )" + values + "}\n";
}

bool Comes(const std::function<bool()>& that) {
  for (int i = 0; i < 1500; ++i, std::this_thread::sleep_for(10ms))
    if (that()) return true;
  return false;
}

// What a browser gets, one event after the other.
class CBrowser {
 public:
  CBrowser(CLoggerWatch& watch, const CStreamRequest& request)
      : m_stream(watch.Subscribe(request, [this] { ++m_calls; })) {}
  CBrowser(const CBrowser&) = delete;
  CBrowser& operator=(const CBrowser&) = delete;
  ~CBrowser() { m_stream->Close(); }

  int Calls() const { return m_calls; }
  // The data of the next event of the type; null if none comes.
  json Next(const std::string& event) {
    json data;
    Comes([&] { return Find(event, data); });
    return data;
  }
  bool Find(const std::string& event, json& data) {
    std::string text;
    while (m_stream->Take(text)) m_text += text;
    for (std::size_t end; (end = m_text.find("\n\n")) != m_text.npos;) {
      const std::string one = m_text.substr(0, end);
      m_text.erase(0, end + 2);
      if (!one.starts_with("event: " + event + "\ndata: ")) continue;
      data = json::parse(one.substr(event.size() + 14));
      return true;
    }
    return false;
  }

 private:
  std::atomic<int> m_calls{0};
  std::string m_text;
  std::shared_ptr<CEventStream> m_stream;
};

class LoggerWatch : public testing::Test {
 protected:
  CString Socket(const char* name) const { return m_dir / "run/" + CString(name) + "/feed"; }
  static json Of(const CWebAnswer& answer) { return json::parse(answer.text); }
  bool IsUp(const char* name) { return Of(m_watch->Logger(name)).value("up", false); }
  bool BecomesUp(const char* name, bool up = true) {
    return Comes([&] { return IsUp(name) == up; });
  }
  void Start(const CLoggerWatch::CFolders& folders = {}) {
    m_watch.emplace(CLoggerFolders{m_dir / "run", m_dir / "etc", m_dir / "state"}, folders);
  }
  json Messages(const char* name, const char* after) {
    return Of(m_watch->Messages(name, CWebQuery(CWebQuery::CPairs{{"after", after}})));
  }

  const CTempDir m_dir;
  std::optional<CLoggerWatch> m_watch;
};

TEST_F(LoggerWatch, AFeedThatIsNoneHurtsNoOther) {
  const std::string rows[] = {"\xFF\xFE\n", Said(1) + std::string(5 << 20, 'x'),
                              Said(1) + Sample(1, "[1]") + "{\"type\": \"message\", \"text\": 1e999}\n"};
  std::list<CSaidFeed> hostile;
  for (std::size_t i = 0; i < std::size(rows); ++i)
    hostile.emplace_back(Socket(("h" + std::to_string(i)).c_str()), rows[i]);
  CSaidFeed closing(Socket("h3"), Said(1), true), good(Socket("kiln"), Said(2));
  Start();
  ASSERT_TRUE(BecomesUp("kiln"));
  for (int i = 1; i <= 20; ++i) {
    good.Say(Sample(i, "[1, 2, 3]"));
    ASSERT_TRUE(Comes([&] { return Of(m_watch->Sample("kiln")).value("number", 0) == i; }));
  }
  const char* const faults[] = {"not one of a feed", "longer than 4 MiB", "not one of a feed", "has closed"};
  for (std::size_t i = 0; i < std::size(faults); ++i)
    EXPECT_TRUE(Comes([&] {
      return Of(m_watch->Logger("h" + std::to_string(i))).value("fault", "").find(faults[i]) !=
             std::string::npos;
    })) << i
        << m_watch->Logger("h" + std::to_string(i)).text;
  EXPECT_TRUE(IsUp("kiln"));
}

TEST_F(LoggerWatch, AnswersAreAsDescribed) {
  CSaidFeed feed(Socket("kiln"), Said(1) + Sample(3, R"([0.1, "nan", "-inf"])") + Message(1) + Message(4));
  const std::string said = Said(1);
  CSaidFeed young(Socket("young"), said.substr(0, said.find("{\"type\": \"counts\"")));
  Start({{"kiln", "/old"}, {"shelf", "/shelf"}, {"k\xE4", "/k"}});
  ASSERT_TRUE(Comes([&] { return Messages("kiln", "0").value("last", 0) == 4 && IsUp("young"); }));
  EXPECT_EQ(m_watch->Sample("kiln").text,
            "{\"logger\":\"kiln\",\"number\":3,\"time\":9003,\"values\":[0.1,\"nan\",\"-inf\"]}\n");
  EXPECT_EQ(Of(m_watch->Variables("kiln"))["variables"],
            json::parse(R"([{"name": "x", "unit": "", "node": ""}, {"name": "y", "unit": "K", "node": "N"},
                            {"name": "up", "unit": "", "node": "N"}])"));
  EXPECT_EQ(Of(m_watch->Variables("kiln", {"x", "mean\xE4"}))["variables"].size(), 4u)
      << "those of logs follow";
  EXPECT_EQ(Of(m_watch->Variables("kiln", {"x", "mean\xE4"}))["variables"][3]["name"], "mean\xEF\xBF\xBD");
  // A relative folder is none; the folder of the command belongs to the logger of its name.
  EXPECT_EQ(m_watch->FoldersOf("kiln"), (std::vector<std::string>{"/a", "/old"}));
  EXPECT_EQ(m_watch->FoldersOf("shelf"), std::vector<std::string>{"/shelf"});
  const json all = Of(m_watch->Loggers())["loggers"];
  ASSERT_EQ(all.size(), 4u);
  EXPECT_EQ(all[0]["kind"], "logger");
  EXPECT_EQ(all[0]["lastSample"], 9003);
  EXPECT_LT(all[0]["lastSampleAge"], 3);  // of the sample, which is newer than that of the state
  EXPECT_EQ(all[0]["problems"], json::array());
  EXPECT_EQ(m_watch->NameOf(all[1]["name"]), "k\xE4");
  EXPECT_EQ(all[2]["kind"], "folder");
  EXPECT_EQ(all[3]["well"], true) << all[3];  // its counts come a second after its state
  EXPECT_EQ(all[3]["read"], nullptr);
  const std::tuple<const char*, std::size_t, int> rows[] = {
      {"0", 2, 2}, {"1", 1, 2}, {"3", 1, 0}, {"4", 0, 0}, {"5", 2, 2}, {"9223372036854775807", 2, 2}};
  for (const auto& [after, count, dropped] : rows) {
    EXPECT_EQ(Messages("kiln", after)["messages"].size(), count) << after;
    EXPECT_EQ(Messages("kiln", after)["dropped"], dropped) << after;
  }
  for (const char* const after : {"", "-1", "x", "1x", "0x1", " 1", "9223372036854775808"})
    EXPECT_EQ(m_watch->Messages("kiln", CWebQuery(CWebQuery::CPairs{{"after", after}})).status, 400) << after;
  for (const char* const name : {"", "mill", "../kiln", "kiln/feed"}) {
    EXPECT_FALSE(m_watch->Has(name));
    EXPECT_EQ(m_watch->FoldersOf(name).size(), 0u);
    for (const CWebAnswer& answer : {m_watch->Logger(name), m_watch->Variables(name), m_watch->Sample(name),
                                     m_watch->Messages(name, CWebQuery())})
      EXPECT_EQ(answer.status, 404) << name;
  }
  EXPECT_EQ(m_watch->Sample("shelf").status, 404);
  feed.Say(Said(1, {"z"}));  // the old sample has other variables
  EXPECT_TRUE(Comes([&] { return m_watch->Sample("kiln").status == 404; }));
  EXPECT_EQ(Of(m_watch->Variables("kiln"))["variables"][0]["name"], "z");
}

// Of a logger that is down since before the start.
TEST_F(LoggerWatch, TheConfigurationNamesTheFoldersOfALoggerThatHasNotAnswered) {
  std::filesystem::create_directories((m_dir / "etc/vastra").Std());
  const char* const kFiles[][2] = {
      {"kiln.json", R"({"outputs": [{"saveRp": 1, "directory": "all"}, {"saveCsv": 1, "directory": "/far"},
                        {"directory": "none"}, {"saveRp": 1, "directory": "all"}],
                        "summaries": [{"saveRp": 1, "directory": "../mean"}]})"},
      {"bad.json", "{"}};
  for (const auto& [name, text] : kFiles) std::ofstream((m_dir / "etc/vastra/" + name).Std()) << text;
  std::filesystem::create_directories((m_dir / "run/dead").Std());
  std::ofstream((m_dir / "run/dead/feed").Std()).close();
  Start();
  const std::string state = (m_dir / "state/").Std();
  EXPECT_EQ(m_watch->FoldersOf("kiln"),
            (std::vector<std::string>{state + "kiln/all", "/far", state + "mean"}));
  for (const char* const name : {"bad", "dead"}) {
    EXPECT_EQ(m_watch->FoldersOf(name).size(), 0u);
    EXPECT_TRUE(m_watch->Has(name) && !m_watch->HasAnswered(name)) << name;
  }
}

TEST_F(LoggerWatch, ManyAskWhileAFeedSpeaks) {
  CSaidFeed feed(Socket("kiln"), Said(1));
  Start();
  ASSERT_TRUE(BecomesUp("kiln"));
  std::vector<std::jthread> askers;
  for (int i = 0; i < 4; ++i)
    askers.emplace_back([&](const std::stop_token& stop) {
      CBrowser browser(*m_watch, {{"kiln"}, {"kiln"}});
      for (std::uint64_t last = 0; !stop.stop_requested();) {
        for (json message; browser.Find("message", message); last = message["number"])
          EXPECT_EQ(message["number"], last + 1);
        m_watch->Metrics(), m_watch->Loggers(), m_watch->FoldersOf("kiln"), m_watch->Variables("kiln");
        EXPECT_EQ(m_watch->Messages("kiln", CWebQuery()).status, 200);
      }
    });
  for (int i = 1; i <= 300; ++i, std::this_thread::sleep_for(2ms))
    feed.Say(Said(1, {std::to_string(i % 7)}) + Message(i) + Sample(i, "[1]"));
  EXPECT_TRUE(Comes([&] { return Messages("kiln", "0")["last"] == 300; }));
}

TEST_F(LoggerWatch, AMessageComesOnceAlsoAfterANewConnection) {
  Start();
  const std::tuple<int, std::string, int, int> lives[] = {
      {1, Message(3) + Message(4), 2, 0},
      {1, Message(3) + Message(4) + Message(5), 3, 0},  // the same process again
      {1, Message(8), 6, 2},
      {2, Message(8), 7, 2},  // another one
      {2, Message(2) + Message(8) + Message(9), 8, 2}};
  for (const auto& [pid, messages, last, dropped] : lives) {
    const CSaidFeed feed(Socket("kiln"), Said(pid) + messages);
    EXPECT_TRUE(Comes([&, last = last] { return Messages("kiln", "0").value("last", 0) >= last; }));
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(Messages("kiln", "0")["last"], last);
    EXPECT_EQ(Messages("kiln", "0")["dropped"], dropped);
  }
}

TEST_F(LoggerWatch, ASlowBrowserGetsTheNewestAndIsToldWhatItHasMissed) {
  CSaidFeed feed(Socket("kiln"), Said(1) + Message(1, "first"));
  Start();
  ASSERT_TRUE(BecomesUp("kiln"));
  CBrowser slow(*m_watch, {{"kiln"}, {"kiln"}}), quick(*m_watch, {{"kiln"}, {"kiln"}});
  EXPECT_EQ(slow.Next("variables")["variables"].size(), 3u);
  EXPECT_EQ(slow.Next("message")["text"], "first");
  const int calls = slow.Calls();
  for (int i = 2; i <= 2000; ++i) {
    feed.Say(Message(i, std::string(100, '-')) + Sample(i, "[1, 2, 3]"));
    if (i % 200 == 0) std::this_thread::sleep_for(60ms);  // longer than a turn of the watch
  }
  json last;
  while (last != 2000) ASSERT_FALSE((last = quick.Next("message")["number"]).is_null());
  EXPECT_LE(slow.Calls(), calls + 2);  // one may have been under way
  EXPECT_EQ(slow.Next("sample")["number"], 2000);
  EXPECT_EQ(slow.Next("dropped"), json::parse(R"({"logger": "kiln", "messages": 1499})"));
  for (int i = 1501; i <= 2000; ++i) ASSERT_EQ(slow.Next("message")["number"], i);
  json more;
  EXPECT_FALSE(slow.Find("sample", more));
  EXPECT_FALSE(slow.Find("message", more));
  const int before = slow.Calls();
  feed.Say(Message(2001));
  EXPECT_TRUE(Comes([&] { return slow.Calls() > before && Messages("kiln", "2000")["last"] == 2001; }));
  CBrowser late(*m_watch, {{}, {"kiln", "kiln", "mill"}});
  EXPECT_EQ(late.Next("message")["number"], 1502);
  EXPECT_FALSE(late.Find("sample", more));
}

}  // namespace
}  // namespace vastra
