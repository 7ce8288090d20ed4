#include "host/web/history_service.h"

#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "host/common/json_text.h"
#include "tests/history/hand_over.h"
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

TEST_F(CHistoryServiceTest, AnswersAreOfTheRangeTheVariablesAndTheParts) {
  Log("1.rph", Names({"a", "b"}), {{1000, {1, kNan}}, {2000, {-2, 0.1f}}});
  Log("2.rph", Names({"c", "a"}), {{2000, {5, 6}}, {9000, {kInfinity, 7}}, {9500, {-kInfinity, 8}}});
  EXPECT_EQ(Json(kRange, {}), (nlohmann::json{{"from", 1000}, {"to", 9501}}));
  const CPairs ac = {{"vars", "a"}, {"vars", "c"}}, none = {{"vars", "d"}};
  const auto with = [](CPairs pairs, const char* from, const char* to, const CPairs& more = {}) {
    pairs.insert(pairs.end(), {{"from", from}, {"to", to}});
    pairs.insert(pairs.end(), more.begin(), more.end());
    return pairs;
  };
  const std::tuple<const char*, CPairs, const char*, const char*> kCases[] = {
      {kRows, ac, "/rows", R"([[1000,1,null],[2000,-2,null],[2000,6,5],[9000,7,"inf"],[9500,8,"-inf"]])"},
      {kRows, {{"vars", "b"}}, "/rows", R"([[1000,"nan"],[2000,0.1]])"},
      {kRows, with(ac, "2000", "9500"), "/rows", R"([[2000,-2,null],[2000,6,5],[9000,7,"inf"]])"},
      {kRows, none, "/rows", "[]"},
      {kRows, {{"vars", "c"}, {"limit", "2"}}, "/rows", R"([[2000,5],[9000,"inf"]])"},
      {kRows, {{"vars", "c"}, {"limit", "2"}}, "/more", "true"},
      {kRows, {{"vars", "c"}, {"limit", "3"}}, "/more", "false"},
      {kBuckets, with(ac, "0", "10000", {{"parts", "2"}}), "",
       R"({"faults":[],"from":0,"times":[0,5000],"to":10000,"variables":[
{"first":[1,7],"greatest":[6,8],"last":[6,8],"least":[-2,7],"mean":[1.6666666,7.5],"name":"a"},
{"first":[5,null],"greatest":[5,null],"last":[5,null],"least":[5,null],"mean":[5,null],"name":"c"}]})"},
      {kBuckets, {{"to", "5"}}, "/times", "[]"},
      {kGaps, {{"longer", "999"}}, "/gaps", "[[1000,2000],[2000,9000]]"},
      {kGaps, with({}, "1500", "9000", {{"longer", "1000"}}), "/gaps", "[[2000,9000]]"}};
  for (const auto& [operation, pairs, place, expected] : kCases)
    EXPECT_EQ(Json(operation, pairs).at(nlohmann::json::json_pointer(place)), ParseJson(expected)) << place;
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
  const std::tuple<const char*, CPairs, std::string> kCases[] = {
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
  for (const auto& [operation, pairs, error] : kCases) EXPECT_EQ(Error(operation, pairs), error);
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
  std::vector<std::string> ids = {"", "0/x.rph\0"s, "0/x.rph\0.txt"s, "0/" + folder + "/secret"};
  for (const char* path : {"/secret", "/one/x.rph"}) ids.push_back(folder + path);
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
  const std::pair<std::function<void()>, const char*> kSteps[] = {{[&] { logger.Keep(3); }, ".journal:3* "},
                                                                  {[&] { logger.Keep(2); }, ".journal:5* "},
                                                                  {[&] { logger.Save(); }, "log1.rph:5 "},
                                                                  {[&] { logger.End(); }, "log1.rph:5 "},
                                                                  {[&] { logger.Keep(1); }, ".journal:1* "}};
  for (const auto& [step, ids] : kSteps) {
    step();
    EXPECT_NE(Ids().find(ids), std::string::npos) << Ids();
  }
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
