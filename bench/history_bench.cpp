// The history of logs: the catalogue of 10,000 logs compared with the bare system calls, rows and buckets
// compared with reading the bytes and with an indexed table of SQLite. On a memory file system.
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>

#include "bench/history_logs.h"
#include "bench/ratios.h"
#include "vastra/history/buckets.h"
#include "vastra/history/catalogue.h"
#include "vastra/history/folder_digest.h"

namespace vastra::bench {
namespace {

constexpr std::uint64_t kParts = 2000;

CLogFolder& Many() {
  static CLogFolder logs(10'000, 400);
  return logs;
}
CLogFolder& Few() {
  static CLogFolder logs(100, 4000);
  return logs;
}

const std::vector<CHistoryLog>& Listed(CLogFolder& logs) {
  static std::map<CLogFolder*, CCatalogue> catalogues;
  CCatalogue& catalogue = catalogues[&logs];
  if (catalogue.Logs().empty()) {
    catalogue.Add(logs.Path(), false);
    catalogue.Scan();
  }
  return catalogue.Logs();
}

void RequireAllOf(CLogFolder& logs, const CCatalogue& catalogue) {
  int rows = 0;
  for (const CHistoryLog& log : catalogue.Logs()) rows += static_cast<int>(log.samples);
  const CMomentRange range = RangeOf(catalogue.Logs());
  Require(rows == logs.Rows() && range.from - logs.Range().from < 1000 && logs.Range().to - range.to < 1000,
          "the catalogue is not complete");
}

void FirstScan(benchmark::State& state) {
  CLogFolder& logs = Many();
  Repeat(state, [&] {
    CCatalogue catalogue;
    catalogue.Add(logs.Path(), false);
    catalogue.Scan();
    RequireAllOf(logs, catalogue);
  });
}

void StatAndRead(benchmark::State& state) {
  CLogFolder& logs = Many();
  std::vector<char> head(logs.HeadSize()), times(logs.TimesSize());
  Repeat(state, [&] {
    for (const std::string& path : logs.Files()) {
      struct stat status = {};
      Require(::stat(path.c_str(), &status) == 0, "stat has failed");
      const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
      const auto place = static_cast<off_t>(logs.TimesPlace());
      Require(::pread(file, head.data(), head.size(), 0) == static_cast<ssize_t>(head.size()) &&
                  ::pread(file, times.data(), times.size(), place) == static_cast<ssize_t>(times.size()),
              "pread has failed");
      ::close(file);
    }
  });
}

void Rescan(benchmark::State& state) {
  CCatalogue catalogue;
  catalogue.Add(Many().Path(), false);
  catalogue.Scan();
  Repeat(state, [&] { catalogue.Scan(); });
  RequireAllOf(Many(), catalogue);
}

void StatAlone(benchmark::State& state) {
  CLogFolder& logs = Many();
  struct stat status = {};
  Repeat(state, [&] {
    for (const std::string& path : logs.Files())
      Require(::stat(path.c_str(), &status) == 0, "stat has failed");
  });
}

void ReadBytes(benchmark::State& state, CLogFolder& (*folder)()) {
  CLogFolder& logs = folder();
  Repeat(state, [&] {
    for (const std::string& path : logs.Files()) benchmark::DoNotOptimize(logs.Read(path));
  });
}

// Some variables, at equal distances around the middle: one that a table has first would be easy to find.
std::vector<int> Chosen(std::int64_t count) {
  std::vector<int> variables;
  for (int i = 0; i < count; ++i)
    variables.push_back(static_cast<int>((i * 2 + 1) * kVariables / (2 * count)));
  return variables;
}

std::vector<CString> NamesOfChosen(std::int64_t count) {
  std::vector<CString> names;
  for (const int variable : Chosen(count)) names.emplace_back(CLogFolder::Name(variable));
  return names;
}

std::string WorkOnRows(std::int64_t columns) { return "sums of " + std::to_string(columns) + " columns"; }

// The reader alone: the times of the rows are used, but not their values.
void Rows(benchmark::State& state) {
  const std::vector<CHistoryLog>& listed = Listed(Few());
  Repeat(state, [&] {
    CRowReader rows(listed, {.range = Few().Range(), .variables = NamesOfChosen(state.range(0))});
    CHistoryRow row;
    CResult result(2);
    for (; rows.Next(row); ++result[0]) result[1] += static_cast<double>(row.moment - Few().Range().from);
    Agree("times of rows", result);
  });
}

void SumRows(benchmark::State& state) {
  const std::vector<CHistoryLog>& listed = Listed(Few());
  const auto columns = static_cast<std::size_t>(state.range(0));
  Repeat(state, [&] {
    CRowReader rows(listed, {.range = Few().Range(), .variables = NamesOfChosen(state.range(0))});
    CHistoryRow row;
    CResult result(columns + 1);
    float value;
    for (; rows.Next(row); ++result[0])
      for (std::size_t i = 0; i < columns; ++i)
        if (row.Get(i, value)) result[i + 1] += static_cast<double>(value);
    Agree(WorkOnRows(state.range(0)), result);
  });
}

void ReadAndSum(benchmark::State& state) {
  CLogFolder& logs = Few();
  const std::vector<int> variables = Chosen(state.range(0));
  Repeat(state, [&] {
    CResult result(variables.size() + 1);
    for (const std::string& path : logs.Files()) {
      const char* log = logs.Read(path);
      for (int row = 0; row < logs.Samples(); ++row, ++result[0]) {
        const char* values = logs.ValuesOf(log, row);
        for (std::size_t i = 0; i < variables.size(); ++i)
          result[i + 1] += static_cast<double>(CLogFolder::ValueOf(values, variables[i]));
      }
    }
    Agree(WorkOnRows(state.range(0)), result);
  });
}

void Sql(sqlite3* database, const std::string& text) {
  Require(sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, text);
}

void InsertLog(sqlite3_stmt* insert, CLogFolder& logs, const std::string& path) {
  const char* log = logs.Read(path);
  for (int row = 0; row < logs.Samples(); ++row) {
    sqlite3_bind_int64(insert, 1, MomentOf(logs.TimeOf(log, row)));
    for (int i = 0; i < kVariables; ++i)
      sqlite3_bind_double(insert, i + 2,
                          static_cast<double>(CLogFolder::ValueOf(logs.ValuesOf(log, row), i)));
    Require(sqlite3_step(insert) == SQLITE_DONE, "cannot insert");
    sqlite3_reset(insert);
  }
}

// The rows of Few in a table with an index of their times.
class CIndexedTable {
 public:
  CIndexedTable() {
    Require(sqlite3_open(m_folder.File("rows.sqlite").c_str(), &m_pDatabase) == SQLITE_OK, "no database");
    std::string columns = "time INTEGER", marks = "?";
    for (int i = 0; i < kVariables; ++i) columns += ", v" + std::to_string(i) + " REAL", marks += ",?";
    Sql(m_pDatabase, "CREATE TABLE rows (" + columns + "); BEGIN");
    sqlite3_stmt* insert = Prepare("INSERT INTO rows VALUES (" + marks + ")");
    for (const std::string& path : Few().Files()) InsertLog(insert, Few(), path);
    sqlite3_finalize(insert);
    Sql(m_pDatabase, "COMMIT; CREATE INDEX by_time ON rows (time); ANALYZE");
  }
  ~CIndexedTable() { sqlite3_close(m_pDatabase); }
  CIndexedTable(const CIndexedTable&) = delete;
  CIndexedTable& operator=(const CIndexedTable&) = delete;

  sqlite3_stmt* Prepare(const std::string& text) {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(m_pDatabase, text.c_str(), -1, &statement, nullptr) == SQLITE_OK, text);
    return statement;
  }

 private:
  CMemoryFolder m_folder;
  sqlite3* m_pDatabase = nullptr;
};

std::string Query(std::int64_t columns) {
  std::string text = "SELECT time";
  for (const int variable : Chosen(columns)) text += ", v" + std::to_string(variable);
  return text + " FROM rows WHERE time >= ? AND time < ? ORDER BY time";
}

void SqliteSum(benchmark::State& state) {
  static CIndexedTable table;
  sqlite3_stmt* select = table.Prepare(Query(state.range(0)));
  sqlite3_bind_int64(select, 1, Few().Range().from);
  sqlite3_bind_int64(select, 2, Few().Range().to);
  Repeat(state, [&] {
    CResult result(static_cast<std::size_t>(state.range(0)) + 1);
    for (; sqlite3_step(select) == SQLITE_ROW; ++result[0])
      for (std::size_t i = 1; i < result.size(); ++i)
        result[i] += sqlite3_column_double(select, static_cast<int>(i));
    sqlite3_reset(select);
    Agree(WorkOnRows(state.range(0)), result);
  });
  sqlite3_finalize(select);
}

// A range whose parts begin in the middle of logs and of their blocks, as those of a chart do.
CMomentRange ChartRange(CLogFolder& logs) { return {logs.Range().from + 137'123, logs.Range().to - 59'877}; }

std::string WorkOnBuckets(CLogFolder& logs, const CMomentRange& range, std::int64_t columns) {
  return "buckets of " + std::to_string(columns) + " columns, " + std::to_string(logs.Files().size()) +
         " logs, " + std::to_string(range.to - range.from);
}

// The number of rows, and of each variable the sum, the least and the greatest value.
CResult ResultOf(double rows, const std::vector<CBucket>& totals) {
  CResult result = {rows};
  for (const CBucket& total : totals)
    result.insert(result.end(), {total.sum + total.sumRest, static_cast<double>(total.least),
                                 static_cast<double>(total.greatest)});
  return result;
}

// What the buckets have to add up to, by a plain loop over the bytes.
void ExpectBuckets(CLogFolder& logs, const CMomentRange& range, std::int64_t columns) {
  const std::vector<int> variables = Chosen(columns);
  double rows = 0;
  std::vector<CBucket> totals(variables.size());
  for (CBucket& total : totals) total.least = 1e9F, total.greatest = -1e9F;
  for (const std::string& path : logs.Files()) {
    const char* log = logs.Read(path);
    for (int row = 0; row < logs.Samples(); ++row) {
      if (!range.Has(MomentOf(logs.TimeOf(log, row)))) continue;
      ++rows;
      for (std::size_t i = 0; i < totals.size(); ++i) {
        const float value = CLogFolder::ValueOf(logs.ValuesOf(log, row), variables[i]);
        totals[i].sum += static_cast<double>(value);
        totals[i].least = std::min(totals[i].least, value);
        totals[i].greatest = std::max(totals[i].greatest, value);
      }
    }
  }
  Agree(WorkOnBuckets(logs, range, columns), ResultOf(rows, totals));
}

void ReadBuckets(benchmark::State& state, CLogFolder& logs, const CMomentRange& range, bool useDigests) {
  const std::vector<CHistoryLog>& listed = Listed(logs);
  ExpectBuckets(logs, range, state.range(0));
  Repeat(state, [&] {
    CBucketReader reader(listed, {.range = range,
                                  .parts = kParts,
                                  .variables = NamesOfChosen(state.range(0)),
                                  .useDigests = useDigests});
    std::vector<CBucket> totals(static_cast<std::size_t>(state.range(0)));
    CBucketPart part;
    double rows = 0;
    for (; reader.Next(part); rows += static_cast<double>(part.rows))
      for (std::size_t i = 0; i < totals.size(); ++i) totals[i].Add(part.buckets[i]);
    Agree(WorkOnBuckets(logs, range, state.range(0)), ResultOf(rows, totals));
  });
}

void Buckets(benchmark::State& state) { ReadBuckets(state, Few(), ChartRange(Few()), false); }

void DigestBuckets(benchmark::State& state, bool isWhole) {
  static const bool isMade = UpdateDigests(Listed(Many())).empty();
  Require(isMade, "the digest was not made");
  ReadBuckets(state, Many(), isWhole ? Many().Range() : ChartRange(Many()), true);
}

BENCHMARK(FirstScan)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StatAndRead)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Rescan)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StatAlone)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadBytes, few, Few)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadBytes, many, Many)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Rows)->Arg(100)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(SumRows)->Arg(100)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAndSum)->Arg(100)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(SqliteSum)->Arg(100)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Buckets)->Arg(1)->Arg(16)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DigestBuckets, whole, true)
    ->Arg(1)
    ->Arg(16)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DigestBuckets, chart, false)
    ->Arg(1)
    ->Arg(16)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vastra::bench

// The goal of a digest: a fiftieth of the goal without one.
int main(int argc, char** argv) {
  constexpr double kDigest = 2.0 / 50;
  const auto goal = [](const char* text, std::string ours, std::string peer, double limit,
                       bool faster = false) {
    return vastra::bench::CGoal{text, {ours + "/manual_time"}, {peer + "/manual_time"}, limit, faster};
  };
  return vastra::bench::RunWithGoals(
      argc, argv,
      {goal("catalogue of 10,000 logs to stat, head and times of each", "FirstScan", "StatAndRead", 3),
       goal("again without changes to stat of each", "Rescan", "StatAlone", 1.5),
       goal("rows of 100 logs, 100 variables, to reading the bytes", "Rows/100", "ReadBytes/few", 1.5),
       goal("the same of 1 variable", "Rows/1", "ReadBytes/few", 1.5),
       goal("sums of these rows to read and sum, 100 variables", "SumRows/100", "ReadAndSum/100", 1.5),
       goal("the same of 1 variable", "SumRows/1", "ReadAndSum/1", 1.5),
       goal("sums to those of an indexed table of SQLite, 100 variables", "SumRows/100", "SqliteSum/100", 20,
            true),
       goal("the same of 1 variable", "SumRows/1", "SqliteSum/1", 20, true),
       goal("2000 parts of 1 variable to reading the bytes", "Buckets/1", "ReadBytes/few", 2),
       goal("the same of 16 variables", "Buckets/16", "ReadBytes/few", 2),
       goal("10,000 logs by digest, 1 variable, parts of whole logs", "DigestBuckets/whole/1",
            "ReadBytes/many", kDigest),
       goal("the same of 16 variables", "DigestBuckets/whole/16", "ReadBytes/many", kDigest),
       goal("10,000 logs by digest, 1 variable, parts begin anywhere", "DigestBuckets/chart/1",
            "ReadBytes/many", kDigest),
       goal("the same of 16 variables", "DigestBuckets/chart/16", "ReadBytes/many", kDigest)});
}
