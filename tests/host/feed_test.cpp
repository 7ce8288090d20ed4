// The feed of a run, as its readers see it through real sockets.
#include "host/run/feed.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <list>

#include "host/run/run.h"
#include "tests/host/logger.h"

namespace vastra {
namespace {

using nlohmann::json;
using Lines = std::vector<json>;

sockaddr_un AddressOf(const CString& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.Std().copy(address.sun_path, sizeof address.sun_path - 1);
  return address;
}

class CReader {
 public:
  explicit CReader(const CString& path, const std::string& request = {}) {
    const sockaddr_un address = AddressOf(path);
    EXPECT_EQ(::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const timeval patience = {10, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (!request.empty()) Ask(request + "\n");
  }
  CReader(const CReader&) = delete;
  CReader& operator=(const CReader&) = delete;
  ~CReader() { ::close(m_socket); }

  void Ask(const std::string& text) { ::send(m_socket, text.data(), text.size(), MSG_NOSIGNAL); }
  // The next line; null at the end of the connection.
  json Next() {
    for (;;) {
      if (const std::size_t end = m_input.find('\n'); end != m_input.npos) {
        const json line = json::parse(m_input.substr(0, end));
        m_input.erase(0, end + 1);
        return line;
      }
      char bytes[65536];
      const ssize_t count = ::recv(m_socket, bytes, sizeof bytes, 0);
      EXPECT_FALSE(count < 0 && errno == EAGAIN) << "nothing comes";
      if (count <= 0) return nullptr;
      m_input.append(bytes, static_cast<std::size_t>(count));
    }
  }
  // The next line of a type that has all these members; null at the end.
  json Next(const char* type, const json& members = json::object()) {
    for (json line; !(line = Next()).is_null();) {
      json same = line;
      same.merge_patch(members);
      if (line["type"] == type && same == line) return line;
    }
    return nullptr;
  }

 private:
  const int m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::string m_input;
};

class Feed : public CLoggerTest {
 protected:
  Feed() { EXPECT_EQ(m_feed.Open(), ""); }
  void Say(const std::string& text) {
    m_messenger.Send("CPlcLink", "Kiln", functionRead, severityError, text.c_str());
  }
  static void Step(CRun& run, int count) {
    while (count-- > 0) run.Step();
  }

  const CString m_path = m_dir / "feed";
  CFeed m_feed{{m_path, "/etc/vastra/kiln.2.json"}};
};

TEST_F(Feed, AReaderFollowsARunFromItsOpeningToItsEnd) {
  CRun run(Logger(R"({"variables": {"x": {"unit": "K"}, "y": {"comment": "no unit"}}})", "{}",
                  R"({"maxSamples": 2, "nameVariable": "x"})"),
           m_messenger, {{.period = CScanLoop::Period(7)}});
  m_feed.Attach(run);
  CReader reader(m_path, R"({"interval": 0})");
  const json opening = reader.Next("hello", {{"variables", json::array()}});
  EXPECT_EQ(opening["name"], "kiln.2");
  json output =
      json::parse(R"({"name": "All", "binary": false, "text": true, "maxLogs": 400, "maxSamples": 2})");
  output["folder"] = m_dir.Path().Std();
  EXPECT_EQ(opening["stages"]["outputs"], json::array({output}));
  EXPECT_EQ(opening["stages"]["origins"], json::parse(R"([{"variables": ["x"], "alive": ""}])"));
  EXPECT_EQ(opening["units"], json::parse(R"([{"variable": "x", "unit": "K"}])"));
  EXPECT_EQ(opening["stages"]["nodes"], json({"Simulator"}));
  EXPECT_EQ(opening["period"], 7);
  EXPECT_EQ(reader.Next("state")["state"], "opening");

  ASSERT_EQ(run.Start(), 1);
  EXPECT_EQ(reader.Next("hello")["variables"], json({"x"}));
  EXPECT_EQ(reader.Next("state")["state"], "running");
  Step(run, 3);
  Say("caf\xE9 \"1\"");
  const json message = reader.Next("message");
  EXPECT_EQ(message["text"], "caf\xEF\xBF\xBD \"1\"");
  EXPECT_EQ(message["severity"], "error");
  EXPECT_EQ(message["function"], "read");
  const json sample = reader.Next("sample", {{"number", 3}});
  EXPECT_EQ(sample["values"], json({3}));
  const json state = CReader(m_path).Next("state");
  EXPECT_EQ(state["lastError"]["text"], message["text"]);
  EXPECT_EQ(state["lastSample"], sample["time"]);
  EXPECT_EQ(state["nodes"][0]["up"], true);

  run.Stop();
  const json log = reader.Next("log", {{"rows", 1}});
  EXPECT_EQ(log["event"], "closed");
  EXPECT_EQ(log["path"], (m_dir / "3h.csv").Std());
  EXPECT_EQ(log["variables"], json({"x"}));
  EXPECT_EQ(log["first"], sample["time"]);
  EXPECT_EQ(reader.Next("state", {{"state", "stopped"}})["lastSampleAge"].is_number(), true);
  const json counts = CReader(m_path).Next("counts");
  EXPECT_EQ(counts["scans"], 3);
  EXPECT_EQ(counts["ledger"][0]["onDisk"], 3);
}

TEST_F(Feed, AReaderGetsWhatItAsksForAndEachSampleOnce) {
  CRun run(Logger(R"({"input": {"preprocess": 1, "preEquationText": "i = 1e39 * x; n = i - i; y = x / 2;",
"preNewVars": ["x", "i", "n", "y"], "asFastAsPossible": 1,
"plcNodes": [{"driver": {"plcType": 9001, "text1": "counter"}, "varNames": ["x"]}]}})"),
           m_messenger);
  m_feed.Attach(run);
  ASSERT_EQ(run.Start(), 1);
  CReader all(m_path, R"({"want": ["sample"], "interval": 0})");
  CReader some(m_path, R"({"want": ["sample"], "vars": ["y", "no", "x"]})");
  CReader counting(m_path, R"({"want": ["counts"]})");
  for (int i = 1; i < 4; ++i) {
    run.Step();
    const json sample = all.Next("sample");
    EXPECT_EQ(sample["number"], i);
    EXPECT_EQ(sample["values"], json({i, "inf", "nan", i / 2.0}));
  }
  EXPECT_EQ(some.Next("sample")["values"][1], json());
  some.Ask("{\"want\": [\"sample\", \"message\"], \"vars\": [\"x\"]}\n");
  Say("late");
  EXPECT_EQ(some.Next("message")["text"], "late");
  EXPECT_EQ(counting.Next("hello")["type"], "hello");
  EXPECT_EQ(counting.Next()["type"], "counts");

  // Neither the same sample again, nor one before the interval is over.
  CReader often(m_path, R"({"want": ["sample", "message"], "interval": 0})");
  CReader rare(m_path, R"({"want": ["sample", "message"], "interval": 3600000})");
  int samples[] = {0, 0};
  for (int mark = 0; mark < 6; ++mark) {
    const std::string text = "mark " + std::to_string(mark);
    Say(text);
    for (CReader* reader : {&often, &rare})
      for (json line; (line = reader->Next()).is_object() && line.value("text", "") != text;)
        samples[reader == &rare] += line["type"] == "sample";
    if (mark == 3) run.Step();
  }
  EXPECT_EQ(samples[0], 2);
  EXPECT_EQ(samples[1], 1);
}

TEST_F(Feed, ALineThatIsNoRequestEndsItsConnectionAlone) {
  const std::pair<std::string, const char*> rows[] = {
      {"\xFF\n", "not valid JSON"},
      {"7\n", "an object"},
      {"{\"wants\": []}\n", "wants: is no key"},
      {"{\"want\": \"sample\"}\n", "want: must be a list"},
      {"{\"want\": [\"samples\"]}\n", "want: is a list of"},
      {"{\"interval\": -1}\n", "interval: must be"},
      {"{\"interval\": \"1\"}\n", "interval: must be"},
      {"{\"vars\": [\"x\", 1]}\n", "vars[1]: must be a string"},
      {std::string(66000, ' '), "more than 65536 bytes"},
  };
  CReader other(m_path, "{}");
  for (const auto& [line, text] : rows) {
    SCOPED_TRACE(text);
    CReader reader(m_path);
    reader.Ask(line);
    EXPECT_NE(reader.Next("error")["text"].get<std::string>().find(text), std::string::npos);
    EXPECT_EQ(reader.Next(), json());
  }
  CReader longest(m_path, std::string(65534, ' ') + "{}");
  EXPECT_EQ(longest.Next("state")["type"], "state");
  EXPECT_EQ(other.Next("state")["type"], "state");
}

TEST_F(Feed, ASlowReaderIsToldHowManyMessagesItHasMissed) {
  CRun run(Logger(), m_messenger);
  m_feed.Attach(run);
  Say("before");
  CReader slow(m_path, R"({"want": ["message"]})"), late(m_path, R"({"want": []})");
  EXPECT_EQ(slow.Next("message")["number"], 1);
  EXPECT_EQ(slow.Next()["type"], "kept");
  constexpr std::uint64_t kSaid = 3000;
  const std::string text(1500, '-');
  for (std::uint64_t i = 1; i < kSaid; ++i) {
    if (i % 600 == 0) CReader(m_path).Next("state");  // the feed has sent what the connection takes
    Say(text);
  }
  std::uint64_t number = 1, missed = 0;
  while (number < kSaid) {
    const json line = slow.Next();
    ASSERT_TRUE(line.is_object());
    const std::uint64_t gap = line["type"] == "dropped" ? line["messages"].get<std::uint64_t>() : 0;
    missed += gap;
    number += gap ? gap : 1;
    if (!gap) {
      ASSERT_EQ(line["number"], number);
    }
  }
  EXPECT_GT(missed, 0u);
  late.Ask("{\"want\": [\"message\"]}\n");  // has missed nothing: it did not want the others
  EXPECT_EQ(late.Next("hello")["type"], "hello");
  for (std::uint64_t i = kSaid - 499; i <= kSaid; ++i) ASSERT_EQ(late.Next()["number"], i);
  EXPECT_EQ(late.Next()["type"], "kept");
}

TEST_F(Feed, TheSixtyFifthReaderIsRefusedUntilOneGoes) {
  std::list<CReader> readers;
  for (int i = 0; i < 64; ++i) EXPECT_EQ(readers.emplace_back(m_path).Next()["type"], "hello");
  for (int i = 0; i < 100; ++i) {
    CReader more(m_path);
    EXPECT_EQ(more.Next()["text"], "there are 64 readers already");
    EXPECT_EQ(more.Next(), json());
  }
  EXPECT_EQ(readers.front().Next("state")["type"], "state");
  readers.pop_front();
  while (CReader(m_path).Next()["type"] != "hello") {
  }
}

TEST_F(Feed, ASocketIsTakenOnlyFromTheDead) {
  struct stat status = {};
  EXPECT_EQ(::stat(m_path, &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0660u);
  const CString used = CFeed({m_path, ""}).Open();
  EXPECT_NE(used.Find("process " + CString(std::to_string(::getpid())) + " uses it"), -1) << used.Std();
  EXPECT_EQ(CReader(m_path).Next()["type"], "hello");

  const CString dead = m_dir / "dead", file = m_dir / "file";
  std::ofstream(file.Std()) << "kept";
  const int left = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_un address = AddressOf(dead);
  ASSERT_EQ(::bind(left, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ::close(left);
  {
    CFeed next({dead, ""});
    EXPECT_EQ(next.Open(), "");
    EXPECT_EQ(CReader(dead).Next()["type"], "hello");
  }
  EXPECT_FALSE(std::filesystem::exists(dead.Std()));
  for (const CString& path : {file, m_dir / "no/feed", m_dir / std::string(120, 'x').c_str()})
    EXPECT_NE(CFeed({path, ""}).Open().Find(path + ": the socket of the feed cannot be made: "), -1);
  EXPECT_TRUE(std::filesystem::is_regular_file(file.Std()));
}

TEST_F(Feed, ARunAfterAnotherHasItsOwnVariablesAndSamples) {
  CReader reader(m_path, R"({"interval": 0, "vars": ["z"]})");
  {
    CRun run(Logger(), m_messenger, {{.scans = 1}});
    m_feed.Attach(run);
    ASSERT_EQ(run.Start(), 1);
    Step(run, 1);
    EXPECT_EQ(reader.Next("sample", {{"number", 1}})["values"], json::array({nullptr}));
    m_feed.Wait("no device");
  }
  EXPECT_EQ(reader.Next("hello", {{"variables", json::array()}})["period"], 0);
  const json waiting = reader.Next("state", {{"state", "waiting"}});
  EXPECT_EQ(waiting["reason"], "no device");
  EXPECT_TRUE(waiting["lastSample"].is_array());
  CRun run(Logger(R"({"input": {"asFastAsPossible": 0, "plcNodes": [{"driver": {"plcType": 9001,
"text1": "counter"}, "varNames": ["z"]}]}, "outputs": []})"),
           m_messenger, {{.scans = 1}});
  m_feed.Attach(run);
  ASSERT_EQ(run.Start(), 1);
  EXPECT_EQ(reader.Next("hello", {{"variables", {"z"}}})["period"], 5000);
  Step(run, 1);
  EXPECT_EQ(reader.Next("sample", {{"number", 1}})["values"], json({1}));
}

}  // namespace
}  // namespace vastra
