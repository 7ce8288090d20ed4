// Whole runs of `vastra convert` over a folder of logs, compared with a plain program that writes the same
// rows: as CSV with printf and strftime, and into a table of SQLite with bare inserts.
#include <sqlite3.h>
#include <sys/wait.h>

#include <cmath>
#include <ctime>
#include <fstream>

#include "bench/history_logs.h"
#include "bench/ratios.h"

namespace vastra::bench {
namespace {

CLogFolder& Logs() {
  static CLogFolder logs(20, 4000);
  return logs;
}

// A new file each time, so that no side has to free the pages of an older one.
template <class TWork>
void RepeatNew(benchmark::State& state, const std::string& path, const TWork& work) {
  Repeat(state, work, [&] { std::filesystem::remove(path); });
}

void Convert(const std::vector<std::string>& options) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "vastra";
  std::vector<std::string> words = {program, "convert", Logs().Path().Std()};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> args;
  for (std::string& word : words) args.push_back(word.data());
  args.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    ::execv(args[0], args.data());
    ::_exit(127);
  }
  int status = 0;
  Require(::waitpid(child, &status, 0) == child && status == 0, "vastra convert has failed");
}

// The rows of a text: a time up to the first comma, then numbers, which read back to the same floats.
void AgreeOnText(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  CResult result(3);  // rows, values, a sum that depends on their order
  for (; std::getline(file, line); ++result[0]) {
    char* at = line.data() + line.find(',');
    result[2] =
        std::fmod(result[2] * 7 + static_cast<double>(std::hash<std::string>()({line.data(), at})), 1e9);
    for (; *at == ',' && at[1] != '\0'; ++result[1])
      result[2] = std::fmod(result[2] * 3 + static_cast<double>(std::strtof(at + 1, &at)), 1e9);
  }
  Agree("rows of a text", result);
}

void ConvertCsv(benchmark::State& state) {
  static const CMemoryFolder folder;  // removed at the exit, also after a failure
  const std::string path = folder.File("rows.csv");
  RepeatNew(state, path, [&] { Convert({"--out", path}); });
  AgreeOnText(path);
}

void PrintRow(std::FILE* file, const _timeb& time, const char* values) {
  const std::time_t seconds = time.time;
  std::tm local;
  ::localtime_r(&seconds, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  std::fprintf(file, "%s.%03d,", text, time.millitm);
  for (int i = 0; i < kVariables; ++i)
    std::fprintf(file, "%.9g,", static_cast<double>(CLogFolder::ValueOf(values, i)));
  std::fprintf(file, "\n");
}

void PrintCsv(CLogFolder& logs, const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  Require(file != nullptr, "cannot write " + path);
  std::fprintf(file, "time,");
  for (int i = 0; i < kVariables; ++i) std::fprintf(file, "%s,", CLogFolder::Name(i).c_str());
  std::fprintf(file, "\n");
  for (const std::string& log : logs.Files()) {
    const char* bytes = logs.Read(log);
    for (int row = 0; row < logs.Samples(); ++row)
      PrintRow(file, logs.TimeOf(bytes, row), logs.ValuesOf(bytes, row));
  }
  Require(std::fclose(file) == 0, "cannot write " + path);
}

void FprintfCsv(benchmark::State& state) {
  static const CMemoryFolder folder;  // removed at the exit, also after a failure
  const std::string path = folder.File("rows.csv");
  RepeatNew(state, path, [&] { PrintCsv(Logs(), path); });
  AgreeOnText(path);
}

void Sql(sqlite3* database, const std::string& text) {
  Require(sqlite3_exec(database, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, text);
}

sqlite3* OpenDatabase(const std::string& path) {
  sqlite3* database = nullptr;
  Require(sqlite3_open(path.c_str(), &database) == SQLITE_OK, "cannot open " + path);
  return database;
}

sqlite3_stmt* Prepare(sqlite3* database, const std::string& text) {
  sqlite3_stmt* statement = nullptr;
  Require(sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr) == SQLITE_OK, text);
  return statement;
}

void AgreeOnTable(const std::string& path) {
  sqlite3* database = OpenDatabase(path);
  std::string text = "SELECT count(*), sum(time)";
  for (int i = 0; i < kVariables; ++i) text += ", sum(" + CLogFolder::Name(i) + ")";
  sqlite3_stmt* select = Prepare(database, text + " FROM rows");
  Require(sqlite3_step(select) == SQLITE_ROW, "cannot read " + path);
  CResult result;
  for (int i = 0; i < sqlite3_column_count(select); ++i) result.push_back(sqlite3_column_double(select, i));
  sqlite3_finalize(select);
  sqlite3_close(database);
  Agree("rows of a table", result);
}

void ConvertSqlite(benchmark::State& state) {
  static const CMemoryFolder folder;  // removed at the exit, also after a failure
  const std::string path = folder.File("rows.sqlite");
  RepeatNew(state, path, [&] { Convert({"--format", "sqlite", "--time", "unix", "--out", path}); });
  AgreeOnTable(path);
}

void InsertLog(sqlite3_stmt* insert, CLogFolder& logs, const std::string& path) {
  const char* log = logs.Read(path);
  for (int row = 0; row < logs.Samples(); ++row) {
    const char* values = logs.ValuesOf(log, row);
    sqlite3_bind_double(insert, 1, static_cast<double>(MomentOf(logs.TimeOf(log, row))) / 1000);
    for (int i = 0; i < kVariables; ++i)
      sqlite3_bind_double(insert, i + 2, static_cast<double>(CLogFolder::ValueOf(values, i)));
    Require(sqlite3_step(insert) == SQLITE_DONE, "cannot insert");
    sqlite3_reset(insert);
  }
}

// A new file that nobody else uses needs no journal.
void InsertRows(CLogFolder& logs, const std::string& path) {
  sqlite3* database = OpenDatabase(path);
  std::string columns = "time REAL", marks = "?";
  for (int i = 0; i < kVariables; ++i) columns += ", " + CLogFolder::Name(i) + " REAL", marks += ",?";
  Sql(database, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE");
  Sql(database, "BEGIN; CREATE TABLE rows (" + columns + ")");
  sqlite3_stmt* insert = Prepare(database, "INSERT INTO rows VALUES (" + marks + ")");
  for (const std::string& log : logs.Files()) InsertLog(insert, logs, log);
  sqlite3_finalize(insert);
  Sql(database, "COMMIT");
  sqlite3_close(database);
}

void Inserts(benchmark::State& state) {
  static const CMemoryFolder folder;  // removed at the exit, also after a failure
  const std::string path = folder.File("rows.sqlite");
  RepeatNew(state, path, [&] { InsertRows(Logs(), path); });
  AgreeOnTable(path);
}

BENCHMARK(ConvertCsv)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FprintfCsv)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ConvertSqlite)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Inserts)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  return vastra::bench::RunWithGoals(argc, argv,
                                     {{"vastra convert to CSV, 80,000 rows of 100, to fprintf and strftime",
                                       {"ConvertCsv/manual_time"},
                                       {"FprintfCsv/manual_time"},
                                       20,
                                       true},
                                      {"vastra convert to a table of SQLite, to bare inserts",
                                       {"ConvertSqlite/manual_time"},
                                       {"Inserts/manual_time"},
                                       1.2,
                                       false}});
}
