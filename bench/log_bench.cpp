// Log files, through the file link: writing a binary log compared with one write of the same bytes, a text
// log compared with the same lines by fprintf, replaying a log compared with one read and memcpy, and a log
// that grows row by row compared with writing its prepared images. All on a memory file system, except the
// growing log, which is synced.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>

#include "bench/ratios.h"
#include "vastra/logfiles/file_link.h"
#include "vastra/platform/file_system.h"

namespace vastra::bench {
namespace {

constexpr UINT kSamples = 4000;
constexpr int kRowValues = 16;
constexpr std::int32_t kStart = 1041516000;  // 2003-01-02 14:00:00 UTC

// A new directory, removed with the object.
class CDirectory {
 public:
  explicit CDirectory(const std::string& place) : m_path(place + "/vastra-bench-XXXXXX") {
    if (!::mkdtemp(m_path.data())) std::abort();
  }
  ~CDirectory() { std::filesystem::remove_all(m_path); }
  std::string File(const char* name) const { return m_path + "/" + name; }
  std::string m_path;
};
constexpr const char* kMemory = "/dev/shm";

double Seconds(clockid_t clock) {
  timespec now;
  ::clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Seconds that work needs; by CLOCK_THREAD_CPUTIME_ID without the time in which other programs ran.
double Time(const std::function<void()>& work, clockid_t clock = CLOCK_MONOTONIC) {
  const double begin = Seconds(clock);
  work();
  return Seconds(clock) - begin;
}

// Nothing waits for a memory file system.
clockid_t ClockOf(std::string_view place) {
  return place == kMemory ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC;
}

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The samples of one log, one a second, with values typical of a plant.
std::vector<CLogSample> Samples(int values) {
  std::mt19937 random(7);
  std::normal_distribution<float> spread(0, 40);
  std::vector<CLogSample> samples(kSamples);
  for (UINT i = 0; i < kSamples; ++i) {
    samples[i].m_time.time = kStart + static_cast<std::int32_t>(i);
    samples[i].m_time.millitm = static_cast<std::uint16_t>(random() % 1000);
    for (int v = 0; v < values; ++v) samples[i].m_values.Add(static_cast<float>(v) + spread(random));
  }
  return samples;
}

std::unique_ptr<CFileConfig> Config(const std::string& directory, int values, int rp, int csv) {
  auto config = std::make_unique<CFileConfig>();
  config->m_extension = ".rph";
  config->m_directory = directory.c_str();
  config->m_nameVariable = "System Time";
  config->m_maxLogs = 1000;
  config->m_maxSamples = kSamples + 1;
  config->m_saveRp = rp;
  config->m_saveCsv = csv;
  for (int i = 0; i < values; ++i) config->m_varNames.Add(CString("Value" + std::to_string(i)));
  return config;
}

// An open file link and its messenger.
class CLinkOf {
 public:
  CLinkOf(std::unique_ptr<CFileConfig> config, UINT mode) {
    CLink::SetMessenger(&m_messenger);
    m_link.reset(CFileLink::Create(nullptr));
    CLinkConfigList configs;
    configs.AddHead(config.release());
    m_open = m_link->Open(configs, mode);
  }
  CFileLink* operator->() { return m_link.get(); }
  bool m_open = false;

 private:
  CMessenger m_messenger;
  std::unique_ptr<CFileLink> m_link;
};

void RemoveFiles(const std::string& directory, const char* extension) {
  for (const CFileEntry& file : ListFiles(directory.c_str(), extension))
    DeleteFile(JoinPath(directory.c_str(), file.m_name));
}

std::string OnlyFile(const std::string& directory, const char* extension) {
  const CArray<CFileEntry> files = ListFiles(directory.c_str(), extension);
  return directory + "/" + files[0].m_name.Std();
}

// The flush of a full log; extension selects the form that is written.
void Save(benchmark::State& state, const char* extension) {
  const CDirectory directory(kMemory);
  const int values = static_cast<int>(state.range(0)), csv = CString(extension) == ".csv";
  std::vector<CLogSample> samples = Samples(values);
  CLinkOf link(Config(directory.m_path, values, !csv, csv), CLink::modeWrite);
  for (auto _ : state) {
    for (CLogSample& sample : samples) link->Write(sample);
    int saved = 0;
    state.SetIterationTime(Time([&] { saved = link->Flush(); }));
    if (!saved) return state.SkipWithError("not saved");
    RemoveFiles(directory.m_path, extension);
  }
}

// The bytes that the link writes to a log of samples.
std::string Image(const std::vector<CLogSample>& samples, const char* extension) {
  const CDirectory directory(kMemory);
  const int csv = CString(extension) == ".csv";
  CLinkOf link(Config(directory.m_path, samples[0].m_values.GetSize(), !csv, csv), CLink::modeWrite);
  for (CLogSample sample : samples) link->Write(sample);
  link->Flush();
  return Bytes(OnlyFile(directory.m_path, extension));
}

void WriteAll(const std::string& path, int flags, const std::string& bytes, bool sync = false) {
  const int handle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0666);
  if (::write(handle, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
  if (sync) ::fsync(handle);
  ::close(handle);
}

void OneWrite(benchmark::State& state) {
  const CDirectory directory(kMemory);
  const std::string path = directory.File("log"),
                    image = Image(Samples(static_cast<int>(state.range(0))), ".rph");
  for (auto _ : state) {
    state.SetIterationTime(Time([&] { WriteAll(path, O_EXCL, image); }));
    ::unlink(path.c_str());
  }
}

void PrintCsv(const std::string& path, const std::vector<CLogSample>& samples) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  std::fprintf(file, "TimeStamp,");
  for (int v = 0; v < samples[0].m_values.GetSize(); ++v) std::fprintf(file, "Value%d,", v);
  std::fprintf(file, "\n");
  for (const CLogSample& sample : samples) {
    const std::tm local = CTime(sample.m_time.time).GetLocalTm();
    char clock[64], year[16];
    std::strftime(clock, sizeof clock, "%a %b %d %H:%M:%S", &local);
    std::strftime(year, sizeof year, "%Y", &local);
    std::fprintf(file, "%s:%d  %s,", clock, sample.m_time.millitm, year);
    for (const float value : sample.m_values) std::fprintf(file, "%f,", static_cast<double>(value));
    std::fprintf(file, "\n");
  }
  std::fclose(file);
}

void Fprintf(benchmark::State& state) {
  const CDirectory directory(kMemory);
  const std::string path = directory.File("log");
  const std::vector<CLogSample> samples = Samples(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.SetIterationTime(Time([&] { PrintCsv(path, samples); }));
    if (state.iterations() == 0 && Bytes(path) != Image(samples, ".csv"))
      return state.SkipWithError("the texts differ");
    ::unlink(path.c_str());
  }
}

// Loads a log and reads all its samples.
void Replay(benchmark::State& state) {
  const CDirectory directory(kMemory);
  const int values = static_cast<int>(state.range(0));
  const std::string path = directory.File("log");
  WriteAll(path, O_EXCL, Image(Samples(values), ".rph"));
  auto config = std::make_unique<CFileConfig>();
  for (int i = 0; i < 100'000; ++i) config->m_files.AddTail(path.c_str());
  CLinkOf link(std::move(config), CLink::modeRead);
  CLogSample sample;
  for (auto _ : state) {
    if (!link->Flush()) return state.SkipWithError("not loaded");
    for (UINT i = 0; i < kSamples; ++i)
      if (!link->Read(sample)) return state.SkipWithError("not read");
  }
}

void ReadAndCopy(benchmark::State& state) {
  const CDirectory directory(kMemory);
  const std::string path = directory.File("log"),
                    image = Image(Samples(static_cast<int>(state.range(0))), ".rph");
  WriteAll(path, O_EXCL, image);
  const auto bytes = std::make_unique<char[]>(image.size()), copy = std::make_unique<char[]>(image.size());
  for (auto _ : state) {
    const int handle = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(handle, bytes.get(), image.size());
    ::close(handle);
    std::memcpy(copy.get(), bytes.get(), static_cast<std::size_t>(size));
    benchmark::DoNotOptimize(copy.get());
    benchmark::ClobberMemory();
  }
}

// A log of kSamples rows that is on disk after each of them.
void Grow(benchmark::State& state, const char* place) {
  const CDirectory directory(place);
  std::vector<CLogSample> samples = Samples(kRowValues);
  CLinkOf link(Config(directory.m_path, kRowValues, 1, 0), CLink::modeWrite);
  for (auto _ : state) {
    double seconds = 0;
    for (CLogSample& sample : samples) {
      link->Write(sample);
      seconds += Time([&] { link->PartialFlush(); }, ClockOf(place));
    }
    state.SetIterationTime(seconds);
    link->Flush();
    RemoveFiles(directory.m_path, ".rph");
  }
}

// The image of the first rows of a whole image.
std::string ImageOfRows(const std::string& whole, std::uint32_t rows) {
  constexpr std::size_t kTail = sizeof(CLogTrailer), kTime = sizeof(_timeb), kRecord = 2 + 4 * kRowValues;
  const std::size_t times = whole.size() - kTail - kTime * kSamples, records = times - 2 - kRecord * kSamples;
  char count[kLongCountSize];
  std::string image = whole.substr(0, records + kRecord * rows);
  image.append(count, PutCount(count, rows));
  image.append(whole, times, kTime * rows).append(kTail, '\0');
  std::memcpy(image.data() + records - sizeof rows, &rows, sizeof rows);
  std::memcpy(image.data() + 12, whole.data() + times + kTime * (rows - 1), sizeof(std::int32_t));
  return image;
}

// The same images, prepared in memory; write writes one.
void EachImage(benchmark::State& state, const char* place,
               const std::function<void(const std::string& path, const std::string& image)>& write) {
  const CDirectory directory(place);
  const std::string path = directory.File("log"), whole = Image(Samples(kRowValues), ".rph");
  for (auto _ : state) {
    double seconds = 0;
    for (std::uint32_t rows = 1; rows <= kSamples; ++rows) {
      const std::string image = ImageOfRows(whole, rows);
      seconds += Time([&] { write(path, image); }, ClockOf(place));
    }
    state.SetIterationTime(seconds);
    if (Bytes(path) != whole) return state.SkipWithError("the images differ");
  }
}

void WriteImages(benchmark::State& state) {
  EachImage(state, kMemory,
            [](const std::string& path, const std::string& image) { WriteAll(path, O_TRUNC, image); });
}

void SyncImages(benchmark::State& state) {
  EachImage(state, ".", [](const std::string& path, const std::string& image) {
    const std::string fresh = path + ".new";
    WriteAll(fresh, O_TRUNC, image, true);
    ::rename(fresh.c_str(), path.c_str());
    SyncDirectory(DirectoryOf(path.c_str()));
  });
}

#define VASTRA_SIZES Arg(16)->Arg(100)->Arg(1000)
BENCHMARK_CAPTURE(Save, rp, ".rph")->VASTRA_SIZES->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(OneWrite)->VASTRA_SIZES->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(Replay)->VASTRA_SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadAndCopy)->VASTRA_SIZES->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Save, csv, ".csv")->VASTRA_SIZES->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Fprintf)->VASTRA_SIZES->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Grow, memory, kMemory)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteImages)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Grow, disk, ".")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(SyncImages)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

struct CPair {
  const char* text;
  const char* ours;
  const char* peer;
  double limit, limitAt16;
  bool faster;
  const char* suffix;  // the part of their names after the peer: the size
};
constexpr CPair kPairs[] = {
    {"binary log, %d values: flush to one write of the bytes", "Save/rp", "OneWrite", 1.3, 1.3, false,
     "/manual_time"},
    {"text log, %d values: flush to fprintf and strftime", "Save/csv", "Fprintf", 20, 20, true,
     "/manual_time"},
    {"replay, %d values: all samples to one read and memcpy", "Replay", "ReadAndCopy", 1.5, 3, false, ""},
};

std::vector<CGoal> Goals() {
  std::vector<CGoal> goals;
  for (const CPair& pair : kPairs)
    for (const int values : {16, 100, 1000}) {
      const std::string suffix = "/" + std::to_string(values) + pair.suffix;
      char text[100];
      std::snprintf(text, sizeof text, pair.text, values);
      goals.push_back({text,
                       {pair.ours + suffix},
                       {pair.peer + suffix},
                       values == 16 ? pair.limitAt16 : pair.limit,
                       pair.faster});
    }
  goals.push_back({"log that grows, on memory: rows to one write of each image",
                   {"Grow/memory/manual_time"},
                   {"WriteImages/manual_time"},
                   1.5,
                   false});
  goals.push_back({"log that grows, on disk: rows to writing, syncing and renaming",
                   {"Grow/disk/iterations:1/manual_time"},
                   {"SyncImages/iterations:1/manual_time"},
                   1.3,
                   false});
  return goals;
}

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) { return vastra::bench::RunWithGoals(argc, argv, vastra::bench::Goals()); }
