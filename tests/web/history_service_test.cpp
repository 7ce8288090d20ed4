#include "host/web/history_service.h"

#include <sys/stat.h>

#include <atomic>
#include <random>
#include <thread>

#include "host/common/json_text.h"
#include "tests/history/hand_over.h"
#include "vastra/logfiles/csv_format.h"

namespace vastra {
namespace {

using CPairs = CWebQuery::CPairs;
using COperation = CWebAnswer (CHistoryService::*)(const std::string&, const CWebQuery&, const CWebStop&);

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class CHistoryServiceTest : public CHistoryFixture {
 protected:
  CWebAnswer Answer(COperation operation, const CPairs& pairs, const CWebStop& isStopped = {}) {
    return (m_service.*operation)("kiln", CWebQuery(pairs), isStopped);
  }
  nlohmann::json Json(COperation operation, const CPairs& pairs) {
    const CWebAnswer answer = Answer(operation, pairs);
    EXPECT_EQ(answer.status, 200) << answer.text;
    return ParseJson(answer.text);
  }
  // The error, after its status.
  std::string Error(COperation operation, const CPairs& pairs, const CWebStop& isStopped = {}) {
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
  std::string File(COperation operation, const CPairs& pairs) {
    const CWebAnswer answer = Answer(operation, pairs);
    return answer.body ? Sent(*answer.body) : std::to_string(answer.status);
  }
  // "id:rows " of each log, "id!fault " of one that is bad.
  std::string Ids(const CPairs& pairs = {}) {
    const nlohmann::json answer = Json(&CHistoryService::Logs, pairs);
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

// Rows as a plain list.
struct CModel {
  struct CRow {
    CMoment moment;
    std::map<std::string, float> values;
  };
  std::vector<CRow> rows;

  std::vector<CRow> Of(const CMomentRange& range, const std::vector<std::string>& names) const {
    std::vector<CRow> found;
    for (const CRow& row : rows)
      if (range.Has(row.moment) && std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return row.values.contains(name);
          }))
        found.push_back(row);
    return found;
  }
};

nlohmann::json ValueJson(const std::map<std::string, float>& values, const std::string& name) {
  const auto at = values.find(name);
  if (at == values.end()) return nullptr;
  if (std::isfinite(at->second)) return static_cast<double>(at->second);
  return std::isnan(at->second) ? "nan" : at->second > 0 ? "inf" : "-inf";
}

// The numbers of a text are doubles: the nearest float of each has to be the value.
nlohmann::json AsFloats(nlohmann::json value) {
  if (value.is_array())
    for (auto& element : value) element = AsFloats(element);
  if (value.is_number_float() || value.is_number_integer())
    value = static_cast<double>(static_cast<float>(value.get<double>()));
  return value;
}

CModel RandomLogs(
    const std::function<void(const char*, const CStringArray&, const std::vector<CTestRow>&)>& write) {
  CModel model;
  std::mt19937 random(7);
  const std::vector<std::vector<const char*>> names = {{"a", "b"}, {"b", "c"}, {"c"}, {"a", "b", "c"}};
  CMoment moment = 1'700'000'000'000;
  for (std::size_t log = 0; log < names.size(); ++log) {
    CStringArray array;
    for (const char* name : names[log]) array.Add(name);
    std::vector<CTestRow> rows;
    moment += 250'000;
    for (int i = 0; i < 300; ++i) {
      moment += 1 + static_cast<CMoment>(random() % 2000) + (i % 97 == 0 ? 90'000 : 0);
      CModel::CRow row{moment, {}};
      rows.push_back({moment, {}});
      for (const char* name : names[log]) {
        const float special[] = {kNan, kInfinity, -kInfinity, -0.0f, 0.1f, 1e-20f};
        const float value =
            random() % 8 == 0 ? special[random() % 6] : static_cast<float>(random()) / 7e6f - 300;
        row.values[name] = value;
        rows.back().values.push_back(value);
      }
      model.rows.push_back(row);
    }
    write(("log" + std::to_string(log) + ".rph").c_str(), array, rows);
  }
  return model;
}

class CHistoryModelTest : public CHistoryServiceTest {
 protected:
  CHistoryModelTest() {
    m_model = RandomLogs([this](auto file, const auto& names, const auto& rows) { Log(file, names, rows); });
    m_first = m_model.rows.front().moment;
    m_last = m_model.rows.back().moment;
  }
  static CPairs Pairs(const CMomentRange& range, const std::vector<std::string>& names) {
    CPairs pairs = {{"from", std::to_string(range.from)}, {"to", std::to_string(range.to)}};
    for (const std::string& name : names) pairs.emplace_back("vars", name);
    return pairs;
  }
  void TestBuckets(const CMomentRange& range, std::int64_t parts);

  CModel m_model;
  CMoment m_first, m_last;
};

TEST_F(CHistoryModelTest, RowsAreThoseOfTheLogs) {
  EXPECT_EQ(Json(&CHistoryService::Range, {}), (nlohmann::json{{"from", m_first}, {"to", m_last + 1}}));
  const CMomentRange ranges[] = {{m_first, m_last + 1},
                                 {m_first, m_last},
                                 {m_first + 400'000, m_last - 300'000},
                                 {m_first - 9, m_first},
                                 {m_first - 8'000'000'000'000, m_last + 8'000'000'000'000 - m_last}};
  for (const CMomentRange& range : ranges)
    for (const std::vector<std::string>& names :
         {std::vector<std::string>{"c"}, {"b", "a"}, {"a", "none"}, {"none"}})
      for (const std::size_t limit : {7, 5000}) {
        CPairs pairs = Pairs(range, names);
        pairs.emplace_back("limit", std::to_string(limit));
        const auto expected = m_model.Of(range, names);
        const nlohmann::json answer = Json(&CHistoryService::Rows, pairs);
        EXPECT_EQ(answer["variables"], names);
        EXPECT_EQ(answer["more"], expected.size() > limit);
        ASSERT_EQ(answer["rows"].size(), std::min(limit, expected.size()));
        for (std::size_t i = 0; i < answer["rows"].size(); ++i) {
          nlohmann::json row = answer["rows"][i];
          ASSERT_EQ(row[0], expected[i].moment);
          ASSERT_EQ(row.size(), names.size() + 1);
          for (std::size_t k = 0; k < names.size(); ++k)
            ASSERT_EQ(AsFloats(row[k + 1]), ValueJson(expected[i].values, names[k])) << row;
        }
      }
}

void CHistoryModelTest::TestBuckets(const CMomentRange& range, std::int64_t parts) {
  CPairs pairs = Pairs(range, {"a", "c"});
  pairs.emplace_back("parts", std::to_string(parts));
  const nlohmann::json answer = Json(&CHistoryService::Buckets, pairs);
  nlohmann::json times = nlohmann::json::array();
  std::size_t place = 0;
  for (std::int64_t i = 0; i < parts; ++i) {
    const std::int64_t length = range.to - range.from;
    const CMomentRange part = {range.from + i * length / parts, range.from + (i + 1) * length / parts};
    const auto rows = m_model.Of(part, {"a", "c"});
    if (rows.empty()) continue;
    times.push_back(part.from);
    for (const auto& variable : answer["variables"]) {
      std::vector<float> values;
      for (const auto& row : rows)
        if (const auto at = row.values.find(variable["name"]);
            at != row.values.end() && std::isfinite(at->second))
          values.push_back(at->second);
      if (values.empty()) {
        for (const char* key : {"least", "greatest", "mean", "first", "last"})
          EXPECT_TRUE(variable[key].at(place).is_null());
        continue;
      }
      double sum = 0;
      for (const float value : values) sum += static_cast<double>(value);
      const auto number = [&](const char* key) {
        return static_cast<float>(variable[key].at(place).get<double>());
      };
      EXPECT_EQ(number("least"), *std::min_element(values.begin(), values.end()));
      EXPECT_EQ(number("greatest"), *std::max_element(values.begin(), values.end()));
      EXPECT_EQ(number("first"), values.front());
      EXPECT_EQ(number("last"), values.back());
      EXPECT_NEAR(variable["mean"].at(place).get<double>(), sum / static_cast<double>(values.size()), 1e-9);
    }
    ++place;
  }
  EXPECT_EQ(answer["times"], times);
  for (const auto& variable : answer["variables"]) EXPECT_EQ(variable["last"].size(), times.size());
}

TEST_F(CHistoryModelTest, BucketsAreThoseOfTheRows) {
  for (const std::int64_t parts : {1, 3, 100, 2000}) TestBuckets({m_first + 12'345, m_last - 12'345}, parts);
  EXPECT_EQ(Json(&CHistoryService::Buckets, {{"to", "5"}})["times"].size(), 0U);
}

TEST_F(CHistoryModelTest, GapsAreBetweenTheRows) {
  for (const std::int64_t longer : {0, 500, 60'000}) {
    const CMomentRange range = {m_first - 100'000, m_last - 5};
    nlohmann::json expected = nlohmann::json::array();
    CMoment before = range.from;
    for (const auto& row : m_model.Of(range, {"a", "b", "c"})) {
      if (row.moment - before > longer) expected.push_back({before, row.moment});
      before = row.moment;
    }
    if (range.to - before > longer) expected.push_back({before, range.to});
    CPairs pairs = Pairs(range, {});
    pairs.emplace_back("longer", std::to_string(longer));
    EXPECT_EQ(Json(&CHistoryService::Gaps, pairs)["gaps"], expected);
  }
}

TEST_F(CHistoryServiceTest, NumbersHaveTheDigitsOfFloats) {
  Log("1.rph", Names({"a\"\n", "\xff"}), {{1000, {0.1f, -0.0f}}, {2000, {kNan, 16777216}}});
  EXPECT_EQ(
      Answer(&CHistoryService::Rows, {}).text,
      "{\"variables\":[\"a\\\"\\n\",\"\xEF\xBF\xBD\"],\"rows\":[[1000,0.1,-0.0],[2000,\"nan\",16777216]],"
      "\"more\":false,\"faults\":[]}\n");
}

TEST_F(CHistoryServiceTest, CsvIsThatOfTheOtherPrograms) {
  std::vector<CTestRow> rows;
  for (int i = 0; i < 5000; ++i) rows.push_back({i * 700, {static_cast<float>(i) / 8, kNan}});
  const CStringArray names = Names({"x,y", "time"});
  Log("day.rph", names, rows);
  CMemFile text;
  CCsvText buffer;
  WriteCsv(text, names, StoreOf(rows), buffer);
  EXPECT_EQ(File(&CHistoryService::LogCsv, {{"id", "0/day.rph"}}), text.Bytes());
  EXPECT_EQ(File(&CHistoryService::RowsCsv, {{"from", "700"}, {"to", "2100"}}),
            "time,\"x,y\",time_2\n1970-01-01 00:00:00.700,0.125,nan\n1970-01-01 00:00:01.400,0.25,nan\n");
  EXPECT_EQ(File(&CHistoryService::RowsCsv, {{"to", "1"}, {"vars", "none"}, {"vars", "x,y"}}),
            "time,none,\"x,y\"\n1970-01-01 00:00:00.000,,0\n");
  const std::string all = File(&CHistoryService::RowsCsv, {});
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 5001);
  EXPECT_EQ(Answer(&CHistoryService::LogCsv, {{"id", "0/day.rph"}}).file, "day.csv");
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
    COperation operation;
    CPairs pairs;
    std::string error;
  } kCases[] = {
      {&CHistoryService::Rows, {{"from", ""}}, "400 from: " + time},
      {&CHistoryService::Rows, {{"from", "1x"}}, "400 from: " + time},
      {&CHistoryService::Rows, {{"from", " 1"}}, "400 from: " + time},
      {&CHistoryService::Rows, {{"from", "+1"}}, "400 from: " + time},
      {&CHistoryService::Rows, {{"from", "1.5"}}, "400 from: " + time},
      {&CHistoryService::Rows, {{"from", std::string("1\0", 2)}}, "400 from: " + time},
      {&CHistoryService::Buckets, {{"to", "8640000000000001"}}, "400 to: " + time},
      {&CHistoryService::Gaps, {{"to", "-99999999999999999999"}}, "400 to: " + time},
      {&CHistoryService::Logs, {{"from", "nan"}}, "400 from: " + time},
      {&CHistoryService::RowsCsv, {{"from", "2"}, {"to", "1"}}, "400 to: must be after from"},
      {&CHistoryService::Rows, {{"from", "2"}, {"to", "2"}}, "400 to: must be after from"},
      {&CHistoryService::Rows, {{"limit", "0"}}, "400 limit: must be a whole number from 1 to 100000"},
      {&CHistoryService::Rows, {{"limit", "100001"}}, "400 limit: must be a whole number from 1 to 100000"},
      {&CHistoryService::Buckets,
       {{"vars", "x"}, {"parts", "10001"}},
       "400 parts: must be a whole number from 1 to 10000"},
      {&CHistoryService::Buckets,
       {{"vars", "x"}, {"parts", "-1"}},
       "400 parts: must be a whole number from 1 to 10000"},
      {&CHistoryService::Buckets, most, "400 parts: must be at most 2000 for 100 variables"},
      {&CHistoryService::Buckets, {}, "400 vars: must name some of the 102 variables, at most 100"},
      {&CHistoryService::Rows, all, "400 vars: there are more than 100 variables"},
      {&CHistoryService::RowsCsv, {{"vars", std::string("x\0", 2)}}, "400 vars: must not contain U+0000"},
      {&CHistoryService::Gaps,
       {{"longer", "-1"}},
       "400 longer: must be a whole number from 0 to 3155760000000"},
      {&CHistoryService::Log, {}, "400 id: is missing"},
      {&CHistoryService::Rows,
       {{"vars", "x"}, {"from", "1"}, {"to", "8640000000000000"}, {"limit", "100000"}},
       "200"},
      {&CHistoryService::Buckets,
       {{"vars", "x"}, {"from", "-8640000000000000"}, {"to", "8640000000000000"}},
       "200"},
  };
  for (const auto& row : kCases) EXPECT_EQ(Error(row.operation, row.pairs), row.error);
  EXPECT_EQ(m_service.Rows("other", CWebQuery(), {}).status, 404);
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
  EXPECT_EQ(File(&CHistoryService::Log, {{"id", "0/x.rph"}}), ReadBytes(Folder() + "/one/x.rph"));
  EXPECT_EQ(File(&CHistoryService::Log, {{"id", "1/sub/a%25b %FF.rph"}}),
            ReadBytes(Folder() + "/two/" + CString(good)));
  const std::string listed = Ids();
  for (const char* id : {"0/x.rph:2 ", "1/sub/a%25b %FF.rph:3 ", "2/y.rph:1 "})
    EXPECT_NE(listed.find(id), listed.npos) << listed;
  for (const std::string& id : {std::string(),
                                std::string("0"),
                                std::string("0/"),
                                std::string("x.rph"),
                                std::string("0/../one/x.rph"),
                                std::string("0/../one-more/secret.rph"),
                                std::string("0/../secret"),
                                "0/" + folder + "/secret",
                                folder + "/secret",
                                folder + "/one/x.rph",
                                std::string("0/plain.txt"),
                                std::string("0/link.rph"),
                                std::string("0/linked/secret.rph"),
                                std::string("0/folder.rph"),
                                std::string("0/fifo.rph"),
                                std::string("0//x.rph"),
                                std::string("0/./x.rph"),
                                std::string("00/x.rph"),
                                std::string("2/x.rph"),
                                std::string("0/x%2erph"),
                                std::string("0/x.rp"),
                                std::string("1/sub/a"),
                                std::string("0/%78.rph"),
                                std::string("0/x.rph\0", 8),
                                std::string("0/x.rph\0.txt", 12),
                                std::string("-more/secret.rph"),
                                std::string("0/-more/secret.rph")})
    for (const COperation operation : {&CHistoryService::Log, &CHistoryService::LogCsv})
      EXPECT_EQ(Answer(operation, {{"id", id}}).status, 404) << id;
}

TEST_F(CHistoryServiceTest, BadLogsAndFoldersAreTold) {
  Log("good.rph", Names({"x"}), Count(0, 4));
  WriteBytes(Folder() + "/bad.rph", "garbage");
  m_folders.push_back((Folder() + "/missing").Std());
  const nlohmann::json answer = Json(&CHistoryService::Logs, {{"from", "9000"}, {"to", "9001"}});
  ASSERT_EQ(answer["logs"].size(), 1U);
  EXPECT_EQ(answer["logs"][0]["file"], "bad.rph");
  EXPECT_TRUE(answer["logs"][0]["first"].is_null());
  EXPECT_EQ(answer["faults"], nlohmann::json({m_folders[1] + ": No such file or directory"}));
  EXPECT_EQ(File(&CHistoryService::Log, {{"id", "0/bad.rph"}}), "garbage");
  EXPECT_EQ(Error(&CHistoryService::LogCsv, {{"id", "0/bad.rph"}}).substr(0, 13), "404 bad.rph: ");
  EXPECT_EQ(Ids({{"from", "3000"}, {"to", "3001"}}).find("0/good.rph:4"), Ids().find("0/good.rph:4"));
}

TEST_F(CHistoryServiceTest, ALogThatGoesAwayIsMissed) {
  for (const char* file : {"1.rph", "2.rph", "3.rph"}) Log(file, Names({"x"}), Count(0, 30'000));
  const std::string folder = Folder().Std();
  const CPairs one = {{"id", "0/1.rph"}}, two = {{"id", "0/2.rph"}}, three = {{"id", "0/3.rph"}};
  const CWebAnswer open = Answer(&CHistoryService::Log, one), csv = Answer(&CHistoryService::LogCsv, one);
  const CWebAnswer cut = Answer(&CHistoryService::Log, two);
  const CWebAnswer rows = Answer(&CHistoryService::RowsCsv, {});
  const std::string bytes = ReadBytes(Folder() + "/1.rph");
  std::filesystem::remove(folder + "/1.rph");
  EXPECT_EQ(Answer(&CHistoryService::Log, one).status, 404);
  EXPECT_EQ(Sent(*open.body), bytes) << "the file was open";
  EXPECT_TRUE(Sent(*csv.body).ends_with("(incomplete)"));
  std::string piece;
  ASSERT_TRUE(cut.body->Next(piece));
  std::filesystem::resize_file(folder + "/2.rph", 40'000);
  EXPECT_EQ(Sent(*cut.body), "(incomplete)");
  EXPECT_TRUE(Sent(*rows.body).ends_with("(incomplete)"));
  EXPECT_EQ(File(&CHistoryService::Log, three), bytes);
}

TEST_F(CHistoryServiceTest, JournalsGrowAndBecomeLogs) {
  CHandOver logger(Folder());
  const auto check = [&](const char* ids) {
    const nlohmann::json rows = Json(&CHistoryService::Rows, {{"vars", "x"}})["rows"];
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

TEST_F(CHistoryServiceTest, AnAnswerEndsWhenNobodyWaits) {
  for (const char* file : {"1.rph", "2.rph"}) Log(file, Names({"x"}), Count(0, 1000));
  EXPECT_EQ(Error(&CHistoryService::Range, {}), "200");
  int looks = 0;
  const CWebStop isStopped = [&looks] { return ++looks > 1; };
  for (const COperation operation :
       {&CHistoryService::Rows, &CHistoryService::Buckets, &CHistoryService::Gaps}) {
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
