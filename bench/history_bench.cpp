// The history of logs on a memory file system: the catalogue of 10,000 logs compared with the bare system
// calls, rows and buckets compared with reading the bytes and with an indexed table of SQLite, and the export
// by the command compared with printf and bare inserts.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "bench/ratios.h"
#include "vastra/history/buckets.h"
#include "vastra/history/catalogue.h"
#include "vastra/history/folder_digest.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra::bench {
namespace {

constexpr int kValues = 100;
constexpr std::int32_t kStart = 1'700'000'000;

void Require(bool isTrue, const char* what) {
  if (isTrue) return;
  std::fprintf(stderr, "history_bench: %s\n", what);
  std::exit(1);
}

// Logs of one sample a second, one after the other, in a folder that is removed with the object.
class CLogs {
 public:
  CLogs(int logs, int samples) : m_samples(samples) {
    Require(::mkdtemp(m_path.data()) != nullptr, "/dev/shm cannot be written");
    MakeTemplate();
    for (int log = 0; log < logs; ++log) WriteLog(log);
  }
  ~CLogs() { std::filesystem::remove_all(m_path); }
  CLogs(const CLogs&) = delete;
  CLogs& operator=(const CLogs&) = delete;

  CString Path() const { return CString(m_path); }
  const std::vector<std::string>& Files() const { return m_files; }
  int Rows() const { return m_samples * static_cast<int>(m_files.size()); }
  std::size_t LogSize() const { return m_bytes.size(); }
  std::size_t TimesSize() const { return sizeof(_timeb) * static_cast<std::size_t>(m_samples); }
  CMomentRange Range() const { return {kStart * CMoment{1000}, (kStart + CMoment{Rows()}) * 1000}; }

 private:
  void MakeTemplate() {
    std::mt19937 random(7);
    std::normal_distribution<float> spread(0, 40);
    CStringArray names;
    for (int i = 0; i < kValues; ++i) names.Add(CString("Variable" + std::to_string(i)));
    CSampleStore store;
    CLogSample sample;
    for (int i = 0; i < m_samples; ++i) {
      sample.m_values.RemoveAll();
      for (int v = 0; v < kValues; ++v) sample.m_values.Add(static_cast<float>(v) + spread(random));
      store.Append(sample);
    }
    CLogWriter writer;
    writer.SetNames(names);
    CMemFile file;
    writer.Write(file, store);
    m_bytes = file.Bytes();
  }
  // The times are before the trailer.
  void WriteLog(int log) {
    char* times = m_bytes.data() + m_bytes.size() - sizeof(CLogTrailer) - TimesSize();
    for (int i = 0; i < m_samples; ++i) {
      _timeb time;
      time.time = kStart + log * m_samples + i;
      std::memcpy(times + static_cast<std::size_t>(i) * sizeof time, &time, sizeof time);
    }
    char name[32];
    std::snprintf(name, sizeof name, "/%06d.rph", log);
    m_files.push_back(m_path + name);
    std::ofstream(m_files.back(), std::ios::binary) << m_bytes;
    const timespec old[2] = {{kStart, 0}, {kStart, 0}};
    ::utimensat(AT_FDCWD, m_files.back().c_str(), old, 0);
  }

  std::string m_path = "/dev/shm/vastra-history-XXXXXX";
  int m_samples;
  std::string m_bytes;  // of a log
  std::vector<std::string> m_files;
};

CLogs& Many() {
  static CLogs logs(10'000, 400);
  return logs;
}
CLogs& Few() {
  static CLogs logs(100, 4000);
  return logs;
}

const std::vector<CHistoryLog>& Listed(CLogs& logs) {
  static std::map<CLogs*, CCatalogue> catalogues;
  CCatalogue& catalogue = catalogues[&logs];
  if (catalogue.Logs().empty()) {
    catalogue.Add(logs.Path(), false);
    catalogue.Scan();
    Require(catalogue.Logs().size() == logs.Files().size(), "not all logs were found");
  }
  return catalogue.Logs();
}

void FirstScan(benchmark::State& state) {
  CLogs& logs = Many();
  for (auto _ : state) {
    CCatalogue catalogue;
    catalogue.Add(logs.Path(), false);
    catalogue.Scan();
    Require(RangeOf(catalogue.Logs()).to == logs.Range().to - 999, "the times are wrong");
  }
}

void StatAndRead(benchmark::State& state) {
  CLogs& logs = Many();
  constexpr std::size_t kHead = 2048;
  std::vector<char> buffer(kHead + logs.TimesSize());
  for (auto _ : state)
    for (const std::string& path : logs.Files()) {
      struct stat status = {};
      Require(::stat(path.c_str(), &status) == 0, "stat has failed");
      const int file = ::open(path.c_str(), O_RDONLY);
      const auto times = static_cast<off_t>(logs.LogSize() - sizeof(CLogTrailer) - logs.TimesSize());
      Require(::pread(file, buffer.data(), kHead, 0) > 0 &&
                  ::pread(file, buffer.data() + kHead, logs.TimesSize(), times) > 0,
              "pread has failed");
      ::close(file);
    }
}

void Rescan(benchmark::State& state) {
  CCatalogue catalogue;
  catalogue.Add(Many().Path(), false);
  catalogue.Scan();
  for (auto _ : state) catalogue.Scan();
}

void StatAlone(benchmark::State& state) {
  struct stat status = {};
  for (auto _ : state)
    for (const std::string& path : Many().Files())
      Require(::stat(path.c_str(), &status) == 0, "stat has failed");
}

// The values of some variables are added up, so that each of them is used.
std::vector<CString> Variables(std::int64_t count) {
  std::vector<CString> names;
  for (std::int64_t i = 0; i < count; ++i)
    names.emplace_back("Variable" + std::to_string(i * kValues / count));
  return names;
}

void Rows(benchmark::State& state) {
  CLogs& logs = Few();
  const std::vector<CHistoryLog>& listed = Listed(logs);
  for (auto _ : state) {
    CRowReader rows(listed, {.range = logs.Range(), .variables = Variables(state.range(0))});
    CHistoryRow row;
    const auto columns = static_cast<std::size_t>(state.range(0));
    int count = 0;
    float sum = 0, value;
    for (; rows.Next(row); ++count)
      for (std::size_t i = 0; i < columns; i += 25)
        if (row.Get(i, value)) sum += value;
    benchmark::DoNotOptimize(sum);
    Require(count == logs.Rows(), "rows are missing");
  }
}

void ReadBytes(benchmark::State& state) {
  CLogs& logs = state.range(0) ? Many() : Few();
  std::vector<char> buffer(logs.LogSize());
  for (auto _ : state)
    for (const std::string& path : logs.Files()) {
      const int file = ::open(path.c_str(), O_RDONLY);
      Require(::read(file, buffer.data(), buffer.size()) == static_cast<ssize_t>(buffer.size()),
              "read has failed");
      benchmark::DoNotOptimize(buffer.data());
      ::close(file);
    }
}

void Sql(sqlite3* database, const std::string& text) {
  Require(sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, text.c_str());
}

// Puts all rows into a new table, in one transaction.
void Insert(sqlite3* database, CLogs& logs) {
  std::string columns = "time INTEGER", marks = "?";
  for (int i = 0; i < kValues; ++i) columns += ", v" + std::to_string(i) + " REAL", marks += ",?";
  Sql(database, "CREATE TABLE rows (" + columns + "); BEGIN");
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(database, ("INSERT INTO rows VALUES (" + marks + ")").c_str(), -1, &insert, nullptr);
  CRowReader rows(Listed(logs), {});
  CHistoryRow row;
  float value = 0;
  while (rows.Next(row)) {
    sqlite3_bind_int64(insert, 1, row.moment);
    for (int i = 0; i < kValues; ++i)
      if (row.Get(static_cast<std::size_t>(i), value))
        sqlite3_bind_double(insert, i + 2, static_cast<double>(value));
    Require(sqlite3_step(insert) == SQLITE_DONE, "insert has failed");
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  Sql(database, "COMMIT");
}

sqlite3* IndexedTable() {
  static sqlite3* database = [] {
    sqlite3* opened = nullptr;
    Require(sqlite3_open((Few().Path().Std() + "/peer.sqlite").c_str(), &opened) == SQLITE_OK, "no database");
    Insert(opened, Few());
    Sql(opened, "CREATE INDEX by_time ON rows (time)");
    return opened;
  }();
  return database;
}

void SqliteRows(benchmark::State& state) {
  sqlite3_stmt* select = nullptr;
  std::string columns = "time";
  for (std::int64_t i = 0; i < state.range(0); ++i)
    columns += ", v" + std::to_string(i * kValues / state.range(0));
  sqlite3* database = IndexedTable();
  const std::string query = "SELECT " + columns + " FROM rows WHERE time >= 0 ORDER BY time";
  sqlite3_prepare_v2(database, query.c_str(), -1, &select, nullptr);
  for (auto _ : state) {
    int count = 0;
    double sum = 0;
    for (; sqlite3_step(select) == SQLITE_ROW; ++count)
      for (int i = 0; i < state.range(0); i += 25) sum += sqlite3_column_double(select, i + 1);
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(select);
    Require(count == Few().Rows(), "rows of the table are missing");
  }
  sqlite3_finalize(select);
}

void ReadBuckets(CLogs& logs, std::int64_t variables, bool useDigests) {
  CBucketReader reader(
      Listed(logs),
      {.range = logs.Range(), .parts = 2000, .variables = Variables(variables), .useDigests = useDigests});
  CBucketPart part;
  std::uint64_t rows = 0;
  while (reader.Next(part)) rows += part.rows;
  Require(rows == static_cast<std::uint64_t>(logs.Rows()), "rows of buckets are missing");
}

void Buckets(benchmark::State& state) {
  for (auto _ : state) ReadBuckets(Few(), state.range(0), false);
}

void BucketsByDigest(benchmark::State& state) {
  static const bool isMade = UpdateDigests(Listed(Many())).empty();
  Require(isMade, "the digest was not made");
  for (auto _ : state) ReadBuckets(Many(), state.range(0), true);
}

BENCHMARK(FirstScan)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(StatAndRead)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Rescan)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(StatAlone)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Rows)->Arg(100)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadBytes)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(SqliteRows)->Arg(100)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Buckets)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BucketsByDigest)->Arg(1)->Arg(16)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  using vastra::bench::CGoal;
  const auto goal = [](const char* text, const char* ours, const char* peer, double limit,
                       bool faster = false) {
    return CGoal{text, {std::string(ours) + "/real_time"}, {std::string(peer) + "/real_time"}, limit, faster};
  };
  return vastra::bench::RunWithGoals(
      argc, argv,
      {goal("catalogue of 10,000 logs to stat and pread of each", "FirstScan", "StatAndRead", 3),
       goal("the same again without changes to stat of each", "Rescan", "StatAlone", 1.5),
       goal("rows of 100 logs of 4000 x 100 to reading the bytes", "Rows/100", "ReadBytes/0", 1.5),
       goal("the same of one variable", "Rows/1", "ReadBytes/0", 1.5),
       goal("the same rows from an indexed table of SQLite", "Rows/100", "SqliteRows/100", 20, true),
       goal("the same of one variable", "Rows/1", "SqliteRows/1", 20, true),
       goal("2000 buckets of 1 variable to reading the bytes", "Buckets/1", "ReadBytes/0", 2),
       goal("the same of 16 variables", "Buckets/16", "ReadBytes/0", 2),
       goal("2000 buckets of 10,000 logs with a digest to reading the bytes", "BucketsByDigest/1",
            "ReadBytes/1", 0.04),
       goal("the same of 16 variables", "BucketsByDigest/16", "ReadBytes/1", 0.04)});
}
