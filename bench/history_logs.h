// Logs of 100 variables with a row each second, on a memory file system: written by the engine, and read
// byte by byte by what the benchmarks of the history compare with.
#pragma once

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "vastra/history/moment.h"
#include "vastra/logfiles/log_writer.h"

namespace vastra::bench {

constexpr int kVariables = 100;

inline void Require(bool isTrue, const std::string& what) {
  if (isTrue) return;
  std::fprintf(stderr, "ERROR OCCURRED: %s\n", what.c_str());
  std::exit(1);
}

// What a piece of work has found: the number of rows, then sums of values or the like.
using CResult = std::vector<double>;

// Seconds of a processor that this process and its ended children have used. Nothing waits for a memory file
// system, so this is the time that the work takes when no other program runs.
inline double ProcessorSeconds() {
  double seconds = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    struct rusage usage = {};
    ::getrusage(who, &usage);
    for (const timeval& time : {usage.ru_utime, usage.ru_stime})
      seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  }
  return seconds;
}

// Repeats work, measured in processor time; prepare is not measured.
template <class TWork, class TPrepare>
void Repeat(benchmark::State& state, const TWork& work, const TPrepare& prepare) {
  for (auto _ : state) {
    prepare();
    const double begin = ProcessorSeconds();
    work();
    state.SetIterationTime(ProcessorSeconds() - begin);
  }
}
template <class TWork>
void Repeat(benchmark::State& state, const TWork& work) {
  Repeat(state, work, [] {});
}

// Both sides of a ratio, and all repetitions, must find the same.
inline void Agree(const std::string& work, const CResult& result) {
  static std::map<std::string, CResult> first;
  Require(first.try_emplace(work, result).first->second == result, "the results differ: " + work);
}

// A new folder, removed with the object.
class CMemoryFolder {
 public:
  CMemoryFolder() { Require(::mkdtemp(m_path.data()) != nullptr, "/dev/shm cannot be written"); }
  ~CMemoryFolder() { std::filesystem::remove_all(m_path); }
  CMemoryFolder(const CMemoryFolder&) = delete;
  CMemoryFolder& operator=(const CMemoryFolder&) = delete;

  const std::string& Path() const { return m_path; }
  std::string File(const std::string& name) const { return m_path + "/" + name; }

 private:
  std::string m_path = "/dev/shm/vastra-history-XXXXXX";
};

class CLogFolder {
 public:
  CLogFolder(int logs, int samples) : m_samples(samples) {
    CStringArray names;
    for (int i = 0; i < kVariables; ++i) names.Add(Name(i).c_str());
    m_writer.SetNames(names);
    for (int log = 0; log < logs; ++log) WriteLog();
    m_store.FreeMemory();
    m_buffer.resize(std::filesystem::file_size(m_files[0]));
  }

  static std::string Name(int variable) { return "Variable" + std::to_string(variable); }
  CString Path() const { return m_folder.Path().c_str(); }
  const std::vector<std::string>& Files() const { return m_files; }
  int Samples() const { return m_samples; }  // of a log
  int Rows() const { return m_rows; }
  CMomentRange Range() const { return {CMoment{kStart} * 1000, CMoment{kStart + m_rows} * 1000}; }

  // Where the parts of a log are: its head from 0 on, the records, the count of the times, the times and a
  // trailer.
  static constexpr std::size_t kRecordSize = SizeOfCount(kVariables) + kVariables * sizeof(float);
  std::size_t TimesSize() const { return sizeof(_timeb) * static_cast<std::size_t>(m_samples); }
  std::size_t TimesPlace() const { return m_buffer.size() - sizeof(CLogTrailer) - TimesSize(); }
  std::size_t HeadSize() const {
    return TimesPlace() - SizeOfCount(static_cast<std::uint32_t>(m_samples)) -
           kRecordSize * static_cast<std::size_t>(m_samples);
  }

  // Reads a whole log into a buffer that all logs share, and returns its bytes.
  const char* Read(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::read(file, m_buffer.data(), m_buffer.size());
    Require(size == static_cast<ssize_t>(m_buffer.size()), "cannot read " + path);
    ::close(file);
    return m_buffer.data();
  }
  // The time and the first value (not aligned) of a row in these bytes.
  _timeb TimeOf(const char* log, int row) const {
    _timeb time;
    std::memcpy(&time, log + TimesPlace() + static_cast<std::size_t>(row) * sizeof time, sizeof time);
    return time;
  }
  const char* ValuesOf(const char* log, int row) const {
    return log + HeadSize() + static_cast<std::size_t>(row) * kRecordSize + SizeOfCount(kVariables);
  }
  static float ValueOf(const char* values, int variable) {
    float value;
    std::memcpy(&value, values + static_cast<std::size_t>(variable) * sizeof value, sizeof value);
    return value;
  }

 private:
  static constexpr std::int32_t kStart = 1'700'000'000;

  std::uint32_t Random() { return m_random = m_random * 1'664'525 + 1'013'904'223; }

  void WriteLog() {
    m_store.RemoveAll();
    for (int i = 0; i < m_samples; ++i) AppendRow();
    char name[32];
    std::snprintf(name, sizeof name, "%06zu.rph", m_files.size());
    m_files.push_back(m_folder.File(name));
    CFile file(m_files.back().c_str(), CFile::modeCreate | CFile::modeWrite);
    m_writer.Write(file, m_store);
  }
  // The values have all 24 bits of a float and few bits above and below, so that sums of them are exact in
  // any order.
  void AppendRow() {
    float values[kVariables];
    for (float& value : values) value = static_cast<float>(static_cast<std::int32_t>(Random()) >> 7) / 65536;
    _timeb time;
    time.time = kStart + m_rows++;
    time.millitm = static_cast<std::uint16_t>((Random() >> 8) % 1000);
    m_store.Append(time, reinterpret_cast<const char*>(values), kVariables);
  }

  CMemoryFolder m_folder;
  int m_samples, m_rows = 0;
  std::uint32_t m_random = 7;
  CLogWriter m_writer;
  CSampleStore m_store;
  std::vector<std::string> m_files;
  std::vector<char> m_buffer;  // as long as a log
};

}  // namespace vastra::bench
