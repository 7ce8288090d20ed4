// Recovery of the journal of 100,000 samples that a killed run has left, up to its log on the (memory) file
// system, compared with reading that log.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "bench/ratios.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/logfiles/journal.h"
#include "vastra/logfiles/log_keeper.h"
#include "vastra/logfiles/log_reader.h"
#include "vastra/platform/file_system.h"

namespace vastra::bench {
namespace {

constexpr UINT kSamples = 100'000;

class CFolder {
 public:
  CFolder() { std::filesystem::create_directory(m_path.Std()); }
  ~CFolder() { std::filesystem::remove_all(m_path.Std()); }

  const CString m_path{"/dev/shm/vastra-recovery-" + std::to_string(::getpid())};
};

std::unique_ptr<CFileConfig> Config(const CString& folder, int values) {
  auto config = std::make_unique<CFileConfig>();
  config->m_extension = ".rph";
  config->m_directory = folder;
  config->m_nameVariable = "System Time";
  config->m_maxLogs = 1000;
  config->m_maxSamples = kSamples;
  config->m_saveRp = 1;
  for (int i = 0; i < values; ++i) config->m_varNames.Add(CString("Value" + std::to_string(i)));
  return config;
}

// Opens and closes an output with its keeper.
int Run(const CString& folder, int values) {
  CLogKeeper keeper(CLogPolicy{});
  const std::unique_ptr<CFileLink> link(CFileLink::Create(nullptr));
  link->SetLogKeeper(&keeper, false);
  CLinkConfigList configs;
  configs.AddHead(Config(folder, values).release());
  return link->Open(configs, CLink::modeWrite);
}

// The journal that a run with these settings leaves if it is killed.
void WriteJournal(const CString& folder, int values) {
  const std::unique_ptr<CFileConfig> config = Config(folder, values);
  CJournalHead head;
  head.naming = {folder, "", config->m_nameVariable, false, config->m_extension, true, false};
  head.maxSamples = kSamples;
  head.varNames = config->m_varNames;
  CSampleStore samples;
  CLogSample sample;
  for (UINT i = 0; i < kSamples; ++i) {
    sample.m_time.time = 1041516000 + static_cast<std::int32_t>(i);
    sample.m_values.RemoveAll();
    for (int v = 0; v < values; ++v)
      sample.m_values.Add(static_cast<float>(i) * 0.25f + static_cast<float>(v));
    samples.Append(sample);
  }
  CSampleSpans spans;
  CSampleStore::CPlace from = samples.GetHeadPlace();
  samples.AddSpans(from, spans);
  CJournalWriter journal(JoinPath(folder, JournalFile(LogKey("output", "", head.naming), 0)), head);
  journal.Append(spans);
}

void Recover(benchmark::State& state) {
  CMessenger messenger;
  CLink::SetMessenger(&messenger);
  messenger.SetFilters(1, 1, 1, 0, 0);
  for (auto _ : state) {
    state.PauseTiming();
    std::optional<CFolder> folder(std::in_place);
    const int values = static_cast<int>(state.range(0));
    WriteJournal(folder->m_path, values);
    state.ResumeTiming();
    const int opened = Run(folder->m_path, values);
    state.PauseTiming();
    if (!opened || ListFiles(folder->m_path, ".rph").GetSize() != 1)
      return state.SkipWithError("not recovered");
    folder.reset();  // before the time goes on
    state.ResumeTiming();
  }
}

void ReadLog(benchmark::State& state) {
  const CFolder folder;
  CMessenger messenger;
  CLink::SetMessenger(&messenger);
  messenger.SetFilters(1, 1, 1, 0, 0);
  WriteJournal(folder.m_path, static_cast<int>(state.range(0)));
  if (!Run(folder.m_path, static_cast<int>(state.range(0)))) return state.SkipWithError("not recovered");
  const CString path = JoinPath(folder.m_path, ListFiles(folder.m_path, ".rph")[0].m_name);
  for (auto _ : state) {
    CSampleStore samples;
    CLogReader log(samples);
    if (!log.Open(path) || !log.ReadSamples() || samples.GetCount() != kSamples)
      return state.SkipWithError("not read");
  }
}

BENCHMARK(Recover)->Arg(16)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadLog)->Arg(16)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  return vastra::bench::RunWithGoals(
      argc, argv,
      {{"recovery of 100,000 samples of 16 values to reading the log",
        {"Recover/16/real_time"},
        {"ReadLog/16/real_time"},
        2,
        false},
       {"the same of 100 values", {"Recover/100/real_time"}, {"ReadLog/100/real_time"}, 2, false}});
}
