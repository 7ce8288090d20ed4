// A whole scan: 100 values of the simulator through namer, scaler and equator, three enable statements, a
// mapper and the file link, with the logs on a memory file system; compared with SQLite, which stores the
// bare rows in one transaction. The same with a keeper, which journals the samples and writes the logs on its
// threads, compared with the scan without one. Also counts the heap allocations between two flushes after the
// first log.
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <thread>

#include "bench/ratios.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_multi_output.h"

namespace {
std::atomic<long> g_allocations{0};
}

void* operator new(std::size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"  // malloc and free match here
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace vastra::bench {
namespace {

constexpr int kValues = 100;
constexpr UINT kSamplesInALog = 4000;

CString Name(int i) {
  CString name;
  name.Format("Value%d", i);
  return name;
}

// A directory on a memory file system, removed with the object.
class CMemoryDirectory {
 public:
  CMemoryDirectory() : m_path("/dev/shm/vastra-bench-" + std::to_string(::getpid())) {
    std::filesystem::create_directory(m_path);
  }
  ~CMemoryDirectory() { std::filesystem::remove_all(m_path); }
  std::string m_path;
};

// The stages of one logger, driven like a host does.
class CLogger {
 public:
  explicit CLogger(int csv, CLogKeeper* keeper = nullptr) {
    CLink::SetMessenger(&m_messenger);
    ConfigureInput(*m_input.GetOptions());
    ConfigureOutput(*m_output.GetOptions(), csv);
    m_output.SetLogKeeper(keeper);
    CStringArray names;
    m_ready = m_input.Open() && m_input.GetVarNames(names) && m_output.Open(names);
  }
  ~CLogger() {
    m_output.Close();
    m_input.Close();
  }
  bool Scan() { return m_input.Read(m_sample) && m_output.Write(m_sample); }

  bool m_ready = false;

 private:
  static void ConfigureInput(CInputConfig& input) {
    auto* node = new CPlcNodeConfig;
    node->m_nodeName = "Bench";
    node->m_driver.plcType = 9001;
    node->m_driver.text1 = "counter";
    node->m_driver.variableCount = kValues;
    for (int i = 0; i < kValues; ++i) {
      CScalerConfigNode rule;
      rule.m_varName = Name(i);
      rule.m_scale = 0.5f;
      node->m_varNames.Add(Name(i));
      node->m_scaler.m_nodes.Add(rule);
      input.m_preNewVars.Add(Name(i));
    }
    input.m_plcNodes.AddTail(node);
    input.m_preprocess = 1;
    input.m_preEquations.Add("n = n + 1");
    input.m_preEquations.Add("Mean = (Value0 + Value1 + Value2 + Value3) / 4");
    input.m_preNewVars.Add("n");
    input.m_preNewVars.Add("Mean");
  }

  void ConfigureOutput(CMultiOutputConfig& outputs, int csv) {
    auto* output = new COutputConfig;
    output->m_enableEquations.Add("SampleIsValid = Value0 >= 0");
    output->m_enableEquations.Add("WriteToLog = 1");
    output->m_enableEquations.Add("RestartLog = 0");
    for (int i = kValues; i-- > 0;) output->m_varNames.Add(Name(i));
    output->m_saveRp = 1;
    output->m_saveCsv = csv;
    output->m_maxLogs = 4;
    output->m_maxSamples = kSamplesInALog;
    output->m_directory = m_directory.m_path.c_str();
    output->m_nameVariable = "System Time";
    outputs.m_outputs.AddTail(output);
  }

  CMessenger m_messenger;
  CMemoryDirectory m_directory;
  CLogInput m_input;
  CLogMultiOutput m_output;
  CLogSample m_sample;
};

void Logger(benchmark::State& state, int csv) {
  CLogger logger(csv);
  if (!logger.m_ready)
    return state.SkipWithError("the stages do not open (is simulator.so beside the program?)");
  bool good = true;
  for (auto _ : state)
    for (UINT i = 0; i < kSamplesInALog; ++i) good &= logger.Scan();
  if (!good) state.SkipWithError("a scan failed");
  state.SetItemsProcessed(state.iterations() * kSamplesInALog);
}

CLogPolicy Policy(bool waits) {
  CLogPolicy policy;
  policy.waits = waits;
  return policy;
}

// As fast as possible: the scans wait while two logs are not on the disk.
void Kept(benchmark::State& state) {
  CLogKeeper keeper(Policy(true));
  CLogger logger(0, &keeper);
  bool good = logger.m_ready;
  for (auto _ : state)
    for (UINT i = 0; i < kSamplesInALog; ++i) good &= logger.Scan();
  if (!good) state.SkipWithError("a scan failed");
}

// A scan each millisecond; the time of the scans alone.
void Paced(benchmark::State& state, bool kept) {
  CLogKeeper keeper(Policy(false));
  CLogger logger(0, kept ? &keeper : nullptr);
  bool good = logger.m_ready;
  auto due = std::chrono::steady_clock::now();
  for (auto _ : state) {
    std::this_thread::sleep_until(due += std::chrono::milliseconds(1));
    const auto begin = std::chrono::steady_clock::now();
    good &= logger.Scan();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  if (!good) state.SkipWithError("a scan failed");
}

// The bare rows of one log: a time and the values, in one transaction.
void Sqlite(benchmark::State& state) {
  CMemoryDirectory directory;
  sqlite3* database = nullptr;
  sqlite3_open((directory.m_path + "/rows.db").c_str(), &database);
  std::string columns = "time REAL", marks = "?";
  for (int i = 0; i < kValues; ++i) columns += ", v" + std::to_string(i) + " REAL", marks += ",?";
  sqlite3_exec(database, ("CREATE TABLE rows (" + columns + ")").c_str(), nullptr, nullptr, nullptr);
  sqlite3_stmt* insert = nullptr;
  sqlite3_prepare_v2(database, ("INSERT INTO rows VALUES (" + marks + ")").c_str(), -1, &insert, nullptr);
  for (auto _ : state) {
    sqlite3_exec(database, "BEGIN", nullptr, nullptr, nullptr);
    for (UINT row = 0; row < kSamplesInALog; ++row) {
      sqlite3_bind_double(insert, 1, row);
      for (int i = 0; i < kValues; ++i) sqlite3_bind_double(insert, i + 2, row * 0.5);
      if (sqlite3_step(insert) != SQLITE_DONE) return state.SkipWithError("a row failed");
      sqlite3_reset(insert);
    }
    sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
  }
  sqlite3_finalize(insert);
  sqlite3_close(database);
  state.SetItemsProcessed(state.iterations() * kSamplesInALog);
}

BENCHMARK_CAPTURE(Logger, rp, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Logger, rp_and_csv, 1)->Unit(benchmark::kMillisecond);
BENCHMARK(Kept)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Paced, plain, false)->Iterations(2000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Paced, kept, true)->Iterations(2000)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(Sqlite)->Unit(benchmark::kMillisecond);

// Allocations of all scans of a log except the one that flushes it.
void PrintAllocations() {
  CLogger logger(1);
  for (UINT i = 0; i < kSamplesInALog; ++i) logger.Scan();
  const long before = g_allocations.load();
  for (UINT i = 0; i + 1 < kSamplesInALog; ++i) logger.Scan();
  const long allocations = g_allocations.load() - before;
  std::printf("%-64s %7ld     (goal: none)%s\n", "heap allocations between two flushes", allocations,
              allocations ? "   MISSED" : "");
}

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  using namespace vastra::bench;
  const int result = RunWithGoals(
      argc, argv,
      {{"whole scan, binary log: rate to that of the rows in SQLite", {"Logger/rp"}, {"Sqlite"}, 7, true},
       {"whole scan, binary and CSV log", {"Logger/rp_and_csv"}, {"Sqlite"}, 3.5, true},
       {"whole scan with a keeper to one without", {"Kept/real_time"}, {"Logger/rp"}, 1.25, false},
       {"the same at 1000 scans a second",
        {"Paced/kept/iterations:2000/manual_time"},
        {"Paced/plain/iterations:2000/manual_time"},
        1.25,
        false}});
  if (result == 0) PrintAllocations();
  return result;
}
