#include "host/web/history_service.h"

#include <sys/stat.h>

#include <atomic>
#include <random>
#include <thread>

#include "host/common/json_text.h"
#include "tests/history/hand_over.h"
#include "vastra/history/row_reader.h"
#include "vastra/logfiles/csv_format.h"

namespace vastra {
namespace {

using namespace std::string_literals;

using CPairs = CWebQuery::CPairs;

constexpr const char *kRange = "range", *kRows = "rows", *kBuckets = "buckets", *kGaps = "gaps",
                     *kLogs = "logs", *kLog = "log", *kLogCsv = "log.csv", *kRowsCsv = "rows.csv";
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class CHistoryServiceTest : public CHistoryFixture {
 protected:
  CWebAnswer Answer(const char* operation, const CPairs& pairs, const CWebStop& isStopped = {}) {
    return m_service.Answer(operation, "kiln", CWebQuery(pairs), isStopped);
  }
  nlohmann::json Json(const char* operation, const CPairs& pairs) {
    const CWebAnswer answer = Answer(operation, pairs);
    EXPECT_EQ(answer.status, 200) << answer.text;
    return ParseJson(answer.text);
  }
  // The error, after its status.
  std::string Error(const char* operation, const CPairs& pairs, const CWebStop& isStopped = {}) {
    const CWebAnswer answer = Answer(operation, pairs, isStopped);
    if (answer.status == 200) return "200";
    EXPECT_FALSE(answer.body);
    return std::to_string(answer.status) + " " + ParseJson(answer.text).at("error").get<std::string>();
  }
  static std::string Sent(CWebBody& body) {
    std::string text, piece;
    while (body.Next(piece)) text += piece;
    return text + (body.IsIncomplete() ? "(incomplete)" : "");
  }
  std::string File(const char* operation, const CPairs& pairs) {
    const CWebAnswer answer = Answer(operation, pairs);
    return answer.body ? Sent(*answer.body) : std::to_string(answer.status);
  }
  // "id:rows " of each log, "id!fault " of one that is bad.
  std::string Ids(const CPairs& pairs = {}) {
    const nlohmann::json answer = Json(kLogs, pairs);
    std::string text;
    for (const auto& log : answer.at("logs")) {
      text += log.at("id").get<std::string>();
      text += log.at("fault").is_null() ? ":" + std::to_string(log.at("rows").get<int>())
                                        : "!" + log.at("fault").get<std::string>();
      text += log.at("open").get<bool>() ? "* " : " ";
    }
    return text;
  }

  std::vector<std::string> m_folders = {Folder().Std()};
  CHistoryService m_service{[this](const std::string& name) -> std::optional<CHistorySource> {
                              if (name != "kiln") return std::nullopt;
                              return CHistorySource{name, m_folders, true};
                            },
                            {.fresh = std::chrono::milliseconds(0), .share = 0}};
};

// A value of the model and one of an answer as the same text: the nearest float of a number has to be the
// value.
using CCell = std::optional<float>;
std::string Shown(const CCell& cell) {
  char text[32] = "-";
  if (cell) std::snprintf(text, sizeof text, "%.9g", static_cast<double>(*cell));
  return text;
}
std::string Shown(const nlohmann::json& value) {
  if (value.is_string()) return value;
  return Shown(value.is_null() ? CCell() : CCell(static_cast<float>(value.get<double>())));
}

// Logs of some of the variables "a", "b" and "c". What the readers get from them is what the answers have.
class CHistoryReadersTest : public CHistoryServiceTest {
 protected:
  CHistoryReadersTest() {
    CMoment moment = 1'700'000'000'000;
    for (const std::string& names : {"ab"s, "bc"s, "c"s, "abc"s}) {
      std::vector<CTestRow> rows;
      for (int i = 0; i < 300; ++i) {
        moment += 1 + static_cast<CMoment>(m_random() % 2000) + (i % 97 == 0 ? 90'000 : 0);
        rows.push_back({moment, {}});
        for (std::size_t k = 0; k < names.size(); ++k) rows.back().values.push_back(RandomValue());
      }
      CStringArray array;
      for (const char name : names) array.Add(CString(std::string(1, name)));
      Log((names + ".rph").c_str(), array, rows);
    }
    m_catalogue.Add(Folder(), true);
    m_catalogue.Scan();
  }
  float RandomValue() {
    const float special[] = {kNan, kInfinity, -kInfinity, -0.0f, 0.1f, 1e-20f};
    return m_random() % 8 == 0 ? special[m_random() % 6] : static_cast<float>(m_random()) / 7e6f - 300;
  }
  static CPairs Pairs(const CMomentRange& range, const std::string& names, const char* key,
                      std::int64_t value) {
    CPairs pairs = {{"from", std::to_string(range.from)}, {"to", std::to_string(range.to)}};
    for (const char name : names) pairs.emplace_back("vars", std::string(1, name));
    pairs.emplace_back(key, std::to_string(value));
    return pairs;
  }

  std::mt19937 m_random{7};
  CCatalogue m_catalogue;
};

TEST_F(CHistoryReadersTest, RowsAreTheirs) {
  const CMomentRange all = RangeOf(m_catalogue.Logs());
  EXPECT_EQ(Json(kRange, {}), (nlohmann::json{{"from", all.from}, {"to", all.to}}));
  for (const CMomentRange& range : {all, {all.from + 400'000, all.to - 1}, {all.from - 9, all.from}})
    for (const std::string& names : {"c"s, "ba"s, "ad"s, "d"s})
      for (const int limit : {7, 5000}) {
        std::vector<CString> variables;
        for (const char name : names) variables.push_back(CString(std::string(1, name)));
        CRowReader reader(m_catalogue.Logs(), {.range = range, .variables = variables});
        std::string expected, text;
        int count = 0;
        for (CHistoryRow row; reader.Next(row); ++count) {
          if (count >= limit) continue;
          expected += std::to_string(row.moment);
          float value = 0;
          for (std::size_t k = 0; k < names.size(); ++k)
            expected += " " + Shown(row.Get(k, value) ? CCell(value) : CCell());
        }
        const nlohmann::json answer = Json(kRows, Pairs(range, names, "limit", limit));
        for (const nlohmann::json& row : answer["rows"]) {
          text += row[0].dump();
          for (std::size_t k = 1; k < row.size(); ++k) text += " " + Shown(row[k]);
        }
        EXPECT_EQ(text, expected);
        EXPECT_EQ(answer["more"], count > limit);
      }
}

TEST_F(CHistoryReadersTest, BucketsAndGapsAreTheirs) {
  const CMomentRange all = RangeOf(m_catalogue.Logs()), range = {all.from - 12'345, all.to - 12'345};
  for (const int parts : {1, 3, 100, 2000}) {
    CBucketReader reader(m_catalogue.Logs(),
                         {.range = range, .parts = std::uint64_t(parts), .variables = {"a", "c"}});
    const nlohmann::json answer = Json(kBuckets, Pairs(range, "ac", "parts", parts));
    std::size_t i = 0;
    for (CBucketPart part; reader.Next(part); ++i) {
      EXPECT_EQ(answer["times"].at(i), part.from);
      for (std::size_t k = 0; k < 2; ++k) {
        const CBucket& bucket = part.buckets[k];
        const std::pair<const char*, float> fields[] = {{"least", bucket.least},
                                                        {"greatest", bucket.greatest},
                                                        {"first", bucket.first},
                                                        {"last", bucket.last},
                                                        {"mean", static_cast<float>(bucket.Mean())}};
        for (const auto& [key, value] : fields)
          EXPECT_EQ(Shown(answer["variables"][k][key].at(i)), Shown(bucket.values ? CCell(value) : CCell()))
              << key;
      }
    }
    EXPECT_EQ(answer["times"].size(), i);
  }
  EXPECT_EQ(Json(kBuckets, {{"to", "5"}})["times"].size(), 0U);
  for (const int longer : {0, 500, 60'000}) {
    nlohmann::json expected = nlohmann::json::array();
    for (const CGap& gap : FindGaps(m_catalogue.Logs(), range, longer))
      expected.push_back({gap.from, gap.to});
    EXPECT_EQ(Json(kGaps, Pairs(range, "", "longer", longer))["gaps"], expected);
  }
}

TEST_F(CHistoryServiceTest, NumbersHaveTheDigitsOfFloats) {
  Log("1.rph", Names({"a\"\n", "\xff"}), {{1000, {0.1f, -0.0f}}, {2000, {kNan, 16777216}}});
  EXPECT_EQ(
      Answer(kRows, {}).text,
      "{\"variables\":[\"a\\\"\\n\",\"\xEF\xBF\xBD\"],\"rows\":[[1000,0.1,-0.0],[2000,\"nan\",16777216]],"
      "\"more\":false,\"faults\":[]}\n");
  EXPECT_EQ(Answer(kBuckets, {{"from", "0"}, {"to", "4000"}, {"parts", "2"}}).text,
            "{\"from\":0,\"to\":4000,\"times\":[0,2000],\"variables\":["
            "{\"name\":\"a\\\"\\n\",\"least\":[0.1,null],\"greatest\":[0.1,null],"
            "\"mean\":[0.1,null],\"first\":[0.1,null],\"last\":[0.1,null]},"
            "{\"name\":\"\xEF\xBF\xBD\",\"least\":[-0.0,16777216],\"greatest\":[-0.0,16777216],"
            "\"mean\":[0,16777216],\"first\":[-0.0,16777216],\"last\":[-0.0,16777216]}],\"faults\":[]}\n");
}

TEST_F(CHistoryServiceTest, CsvIsThatOfTheOtherPrograms) {
  std::vector<CTestRow> rows;
  for (int i = 0; i < 5000; ++i) rows.push_back({i * 700, {static_cast<float>(i) / 8, kNan}});
  const CStringArray names = Names({"x,y", "time"});
  Log("day.rph", names, rows);
  CMemFile text;
  CCsvText buffer;
  WriteCsv(text, names, StoreOf(rows), buffer);
  EXPECT_EQ(File(kLogCsv, {{"id", "0/day.rph"}}), text.Bytes());
  EXPECT_EQ(File(kRowsCsv, {{"from", "700"}, {"to", "2100"}}),
            "time,\"x,y\",time_2\n1970-01-01 00:00:00.700,0.125,nan\n1970-01-01 00:00:01.400,0.25,nan\n");
  EXPECT_EQ(File(kRowsCsv, {{"to", "1"}, {"vars", "none"}, {"vars", "x,y"}}),
            "time,none,\"x,y\"\n1970-01-01 00:00:00.000,,0\n");
  const std::string all = File(kRowsCsv, {});
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 5001);
  EXPECT_EQ(Answer(kLogCsv, {{"id", "0/day.rph"}}).file, "day.csv");
}

TEST_F(CHistoryServiceTest, WrongParametersAreRefused) {
  Log("1.rph", Names({"x"}), Count(0, 5));
  CStringArray many;
  for (int i = 0; i < 101; ++i) many.Add(("v" + std::to_string(i)).c_str());
  Log("2.rph", many, {{9000, std::vector<float>(101, 1.0f)}});
  CPairs all;
  for (int i = 0; i < 101; ++i) all.emplace_back("vars", "v" + std::to_string(i));
  CPairs most(all.begin(), all.end() - 1);
  most.emplace_back("parts", "2001");
  const std::string time = "must be a time, whole milliseconds since 1970";
  const struct {
    const char* operation;
    CPairs pairs;
    std::string error;
  } kCases[] = {
      {kRows, {{"from", ""}}, "400 from: " + time},
      {kRows, {{"from", "1x"}}, "400 from: " + time},
      {kRows, {{"from", "1.5"}}, "400 from: " + time},
      {kRows, {{"from", "1\0"s}}, "400 from: " + time},
      {kBuckets, {{"to", "8640000000000001"}}, "400 to: " + time},
      {kGaps, {{"to", "-99999999999999999999"}}, "400 to: " + time},
      {kLogs, {{"from", "nan"}}, "400 from: " + time},
      {kRowsCsv, {{"from", "2"}, {"to", "1"}}, "400 to: must be after from"},
      {kRows, {{"from", "2"}, {"to", "2"}}, "400 to: must be after from"},
      {kRows, {{"limit", "0"}}, "400 limit: must be a whole number from 1 to 100000"},
      {kRows, {{"limit", "100001"}}, "400 limit: must be a whole number from 1 to 100000"},
      {kBuckets, {{"vars", "x"}, {"parts", "10001"}}, "400 parts: must be a whole number from 1 to 10000"},
      {kBuckets, {{"vars", "x"}, {"parts", "-1"}}, "400 parts: must be a whole number from 1 to 10000"},
      {kBuckets, most, "400 parts: must be at most 2000 for 100 variables"},
      {kBuckets, {}, "400 vars: must name some of the 102 variables, at most 100"},
      {kRows, all, "400 vars: there are more than 100 variables"},
      {kRowsCsv, {{"vars", "x\0"s}}, "400 vars: must not contain U+0000"},
      {kGaps, {{"longer", "-1"}}, "400 longer: must be a whole number from 0 to 3155760000000"},
      {kLog, {}, "400 id: is missing"},
      {kRows, {{"vars", "x"}, {"from", "1"}, {"to", "8640000000000000"}, {"limit", "100000"}}, "200"},
      {kBuckets, {{"vars", "x"}, {"from", "-8640000000000000"}, {"to", "8640000000000000"}}, "200"},
  };
  for (const auto& row : kCases) EXPECT_EQ(Error(row.operation, row.pairs), row.error);
  EXPECT_EQ(m_service.Answer(kRows, "other", CWebQuery()).status, 404);
}

TEST_F(CHistoryServiceTest, OnlyListedLogsAreSent) {
  const std::string folder = Folder().Std(), good = "sub/a%b \xff.rph";
  m_folders = {folder + "/one", folder + "/two/", folder + "/one-b"};
  Log("one/x.rph", Names({"x"}), Count(0, 2));
  Log(("two/" + good).c_str(), Names({"x"}), Count(2, 3));
  Log("one-b/y.rph", Names({"x"}), Count(5, 1));
  Log("one-more/secret.rph", Names({"x"}), Count(5, 1));
  WriteBytes(Folder() + "/one/plain.txt", "secret");
  WriteBytes(Folder() + "/secret", "secret");
  std::filesystem::create_symlink(folder + "/secret", folder + "/one/link.rph");
  std::filesystem::create_directory_symlink(folder + "/one-more", folder + "/one/linked");
  std::filesystem::create_directory(folder + "/one/folder.rph");
  ASSERT_EQ(::mkfifo((folder + "/one/fifo.rph").c_str(), 0600), 0);
  EXPECT_EQ(File(kLog, {{"id", "0/x.rph"}}), ReadBytes(Folder() + "/one/x.rph"));
  EXPECT_EQ(File(kLog, {{"id", "1/sub/a%25b %FF.rph"}}), ReadBytes(Folder() + "/two/" + CString(good)));
  const std::string listed = Ids();
  for (const char* id : {"0/x.rph:2 ", "1/sub/a%25b %FF.rph:3 ", "2/y.rph:1 "})
    EXPECT_NE(listed.find(id), listed.npos) << listed;
  std::vector<std::string> ids = {"",
                                  "0/x.rph\0"s,
                                  "0/x.rph\0.txt"s,
                                  "0/" + folder + "/secret",
                                  folder + "/secret",
                                  folder + "/one/x.rph"};
  std::istringstream more(
      "0 0/ x.rph 0/../one/x.rph 0/../one-more/secret.rph 0/../secret 0/plain.txt 0/link.rph 0//x.rph "
      "0/linked/secret.rph 0/folder.rph 0/fifo.rph 0/./x.rph 00/x.rph 2/x.rph 0/x%2erph 0/x.rp "
      "1/sub/a 0/%78.rph -more/secret.rph 0/-more/secret.rph");
  for (std::string id; more >> id;) ids.push_back(id);
  for (const std::string& id : ids)
    for (const char* const operation : {kLog, kLogCsv})
      EXPECT_EQ(Answer(operation, {{"id", id}}).status, 404) << id;
}

TEST_F(CHistoryServiceTest, NamesThatAreNotUtf8AreFoundByWhatIsShown) {
  const std::string shown = "T\xEF\xBF\xBD";
  Log("1.rph", Names({"T\xE4", "T\xF6"}), {{1000, {4, 6}}});
  EXPECT_EQ(Json("variables", {})["variables"].dump(),
            R"([{"name":")" + shown + R"(","node":"","unit":""}])");
  const std::pair<std::string, int> kCases[] = {{shown, 4}, {"T\xE4", 4}, {"T\xF6", 6}};
  for (const auto& [name, value] : kCases) {
    EXPECT_EQ(Json(kRows, {{"vars", name}})["rows"][0][1], value) << name;
    EXPECT_EQ(Json(kBuckets, {{"vars", name}})["variables"][0]["least"][0], value) << name;
    EXPECT_NE(File(kRowsCsv, {{"vars", name}}).find("," + std::to_string(value)), std::string::npos) << name;
  }
}

TEST_F(CHistoryServiceTest, BadLogsAndFoldersAreTold) {
  Log("good.rph", Names({"x"}), Count(0, 4));
  WriteBytes(Folder() + "/bad.rph", "garbage");
  m_folders.push_back((Folder() + "/missing").Std());
  const nlohmann::json answer = Json(kLogs, {{"from", "9000"}, {"to", "9001"}});
  ASSERT_EQ(answer["logs"].size(), 1U);
  EXPECT_EQ(answer["logs"][0]["file"], "bad.rph");
  EXPECT_TRUE(answer["logs"][0]["first"].is_null());
  EXPECT_EQ(answer["faults"], nlohmann::json({m_folders[1] + ": No such file or directory"}));
  EXPECT_EQ(File(kLog, {{"id", "0/bad.rph"}}), "garbage");
  EXPECT_EQ(Error(kLogCsv, {{"id", "0/bad.rph"}}).substr(0, 13), "404 bad.rph: ");
  EXPECT_EQ(Ids({{"from", "3000"}, {"to", "3001"}}).find("0/good.rph:4"), Ids().find("0/good.rph:4"));
}

TEST_F(CHistoryServiceTest, ALogThatGoesAwayIsMissed) {
  for (const char* file : {"1.rph", "2.rph", "3.rph"}) Log(file, Names({"x"}), Count(0, 30'000));
  const std::string folder = Folder().Std();
  const CPairs one = {{"id", "0/1.rph"}}, two = {{"id", "0/2.rph"}}, three = {{"id", "0/3.rph"}};
  const CWebAnswer open = Answer(kLog, one), csv = Answer(kLogCsv, one);
  const CWebAnswer cut = Answer(kLog, two);
  const CWebAnswer rows = Answer(kRowsCsv, {});
  const std::string bytes = ReadBytes(Folder() + "/1.rph");
  std::filesystem::remove(folder + "/1.rph");
  EXPECT_EQ(Answer(kLog, one).status, 404);
  EXPECT_EQ(Sent(*open.body), bytes) << "the file was open";
  EXPECT_TRUE(Sent(*csv.body).ends_with("(incomplete)"));
  std::string piece;
  ASSERT_TRUE(cut.body->Next(piece));
  std::filesystem::resize_file(folder + "/2.rph", 40'000);
  EXPECT_EQ(Sent(*cut.body), "(incomplete)");
  EXPECT_TRUE(Sent(*rows.body).ends_with("(incomplete)"));
  EXPECT_EQ(File(kLog, three), bytes);
}

TEST_F(CHistoryServiceTest, JournalsGrowAndBecomeLogs) {
  CHandOver logger(Folder());
  const auto check = [&](const char* ids) {
    const nlohmann::json rows = Json(kRows, {{"vars", "x"}})["rows"];
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(logger.Kept())) << ids;
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i], (nlohmann::json{i * 1000, i}));
    const std::string listed = Ids();
    EXPECT_NE(listed.find(ids), listed.npos) << listed;
  };
  logger.Keep(3);
  check(".journal:3* ");
  logger.Keep(2);
  check(".journal:5* ");
  logger.Save();
  check("log1.rph:5 ");
  logger.End();
  check("log1.rph:5 ");
  logger.Keep(1);
  check(".journal:1* ");
}

TEST_F(CHistoryServiceTest, RequestsWhileALoggerWritesSeeEachRowOnce) {
  CHandOver logger(Folder());
  std::atomic<bool> isOver = false;
  std::vector<std::thread> readers;
  const auto read = [&] {
    for (std::size_t before = 0; !isOver;) {
      const nlohmann::json rows = Json(kRows, {{"vars", "x"}, {"limit", "9999"}})["rows"];
      ASSERT_GE(rows.size(), before);
      before = rows.size();
      for (std::size_t i = 0; i < rows.size(); ++i) ASSERT_EQ(rows[i][1], i);
    }
  };
  for (int i = 0; i < 3; ++i) readers.emplace_back(read);
  for (int i = 0; i < 100; ++i, logger.End()) {
    for (int part = 0; part < 3; ++part) logger.Keep(5);
    logger.Save();
  }
  isOver = true;
  for (std::thread& reader : readers) reader.join();
}

TEST_F(CHistoryServiceTest, AnAnswerEndsWhenNobodyWaits) {
  for (const char* file : {"1.rph", "2.rph"}) Log(file, Names({"x"}), Count(0, 1000));
  EXPECT_EQ(Error(kRange, {}), "200");
  int looks = 0;
  const CWebStop isStopped = [&looks] { return ++looks > 1; };
  for (const char* operation : {kRows, kBuckets, kGaps}) {
    looks = 0;
    EXPECT_EQ(Error(operation, {{"limit", "100000"}, {"parts", "1"}}, isStopped),
              "503 the answer has taken too long");
    EXPECT_LE(looks, 4);
  }
}

// A folder that takes long: its lists end when the test lets them.
class CSlowFolders final : public CFileLayer {
 public:
  CSlowFolders() { m_pBefore = SetFileLayer(this); }
  ~CSlowFolders() override { SetFileLayer(m_pBefore); }

  int ListWanted(const CString& folder, const CWanted& wanted, std::vector<CFolderEntry>& entries) override {
    ++m_lists;
    while (m_isSlow) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return CFileLayer::ListWanted(folder, wanted, entries);
  }

  std::atomic<int> m_lists = 0;
  std::atomic<bool> m_isSlow = false;

 private:
  CFileLayer* m_pBefore;
};

TEST_F(CHistoryServiceTest, OneRequestAtATimeLooksAtAFolder) {
  CSlowFolders folders;
  Log("1.rph", Names({"x"}), Count(0, 10));
  const CHistorySource source = {"one", m_folders, false};
  CHistoryCatalogues catalogues({.fresh = std::chrono::milliseconds(0), .share = 0});
  const auto look = [&] { return catalogues.Logs(source, {}); };
  for (const bool isFirst : {true, false}) {
    folders.m_isSlow = true;
    folders.m_lists = 0;
    std::thread other(look);
    while (folders.m_lists == 0) std::this_thread::yield();
    bool hasWaited = false;
    const CSharedLogs logs = catalogues.Logs(source, [&hasWaited] { return hasWaited = true; });
    EXPECT_EQ(logs ? logs->size() : 0U, isFirst ? 0U : 1U);
    EXPECT_EQ(hasWaited, isFirst) << "the list as it was is at hand";
    EXPECT_EQ(folders.m_lists, 1);
    folders.m_isSlow = false;
    other.join();
  }
}

TEST_F(CHistoryServiceTest, CataloguesAreSharedAndDropped) {
  Log("one/1.rph", Names({"x"}), Count(0, 10));
  Log("two/2.rph", Names({"x"}), Count(0, 20));
  const CHistorySource one = {"one", {(Folder() + "/one").Std()}, false},
                       two = {"two", {(Folder() + "/two").Std()}, false};
  CHistoryCatalogues catalogues({.fresh = std::chrono::hours(1), .unused = std::chrono::hours(1), .most = 1});
  std::vector<CSharedLogs> lists(8);
  std::vector<std::thread> threads;
  for (CSharedLogs& logs : lists) threads.emplace_back([&] { logs = catalogues.Logs(one, {}); });
  for (std::thread& thread : threads) thread.join();
  for (const CSharedLogs& logs : lists) EXPECT_EQ(logs, lists[0]) << "the folder was looked at twice";
  Log("one/3.rph", Names({"x"}), Count(0, 10));
  EXPECT_EQ(catalogues.Logs(one, {})->size(), 1U) << "the list is fresh";
  EXPECT_EQ(catalogues.Logs(two, {})->front().samples, 20U);
  EXPECT_EQ(catalogues.Logs(one, {})->size(), 2U) << "was dropped for the other one";
  EXPECT_EQ(lists[0]->size(), 1U);
}

}  // namespace
}  // namespace vastra
