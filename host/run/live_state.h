// CLiveState: the present state of a run, for readers on any thread, such as a window or a status line. The
// run writes it at each scan and never waits for a reader.
//
// Time, values and counts are in a sequence lock: numbers that the writer stores one by one between two steps
// of a sequence number. A reader copies them and starts again if the number has moved. Names, logs and
// messages change seldom; they are shared objects behind a mutex that is held only while pointers are copied.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "host/run/run_observer.h"

namespace vastra {

// The last file that an output or summary has saved, or failed to save.
struct CLastLog {
  CLogSource source;
  CString path;
  _timeb first, last;  // not set after a failure
  std::uint64_t samples = 0;
  CString reason;  // why the file was not saved; empty: it was
};

// A CRunMessage with texts of its own.
struct CKeptMessage {
  _timeb time;
  char severity;
  char function;
  CString link, name, text;
};

struct CLiveSnapshot {
  bool isRunning = false;
  std::vector<CString> names;
  std::uint64_t samples = 0;  // with these names; 0: time and values are not set
  _timeb time{};
  std::vector<float> values;  // one for each name, once there is a sample
  CRunCounts counts;
  std::vector<std::shared_ptr<const CLastLog>> logs;          // of each source that has one
  std::vector<std::shared_ptr<const CKeptMessage>> messages;  // the last ones, oldest first
};

class CLiveState : public CRunObserver {
 public:
  static constexpr std::size_t kMessages = 100;  // that are kept

  // The present state; from any thread.
  CLiveSnapshot Snapshot() const;

  void Started(const CStringArray& names) override;
  void Renamed(const CStringArray& names) override;
  void Sampled(const CLogSample& sample) override;
  void Counted(const CRunCounts& counts) override;
  void Message(const CRunMessage& message) override;
  void LogClosed(const CLogSource& source, const CSavedLog& log) override;
  void LogGrew(const CLogSource& source, const CSavedLog& log) override { LogClosed(source, log); }
  void LogNotSaved(const CLogSource& source, const CUnsavedLog& log) override;
  void Stopped() override;

 private:
  // What changes with each scan, except the values.
  struct CHead {
    _timeb time;
    std::uint64_t samples = 0;
    CRunCounts counts;
  };
  using Word = std::uint64_t;
  static constexpr std::size_t kWords = (sizeof(CHead) + sizeof(Word) - 1) / sizeof(Word);
  using Values = std::vector<std::atomic<float>>;

  struct CFixed {
    std::shared_ptr<const std::vector<CString>> names;
    std::shared_ptr<const Values> values;
  };

  CFixed CopyFixed(CLiveSnapshot& snapshot) const;
  void StoreHead();
  // Each store between the two is releasing, so a reader that sees one of them sees the odd number, too.
  void BeginChange() {
    m_sequence.store(m_sequence.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  void EndChange() { BeginChange(); }
  bool CopyNumbers(const Values& values, CLiveSnapshot& snapshot) const;
  void Keep(std::shared_ptr<const CLastLog> log);

  CHead m_head;                                     // the writer's
  std::atomic<std::uint64_t> m_sequence{0};         // odd while the writer stores
  std::array<std::atomic<Word>, kWords> m_words{};  // m_head as the readers see it

  mutable std::mutex m_mutex;  // of what follows
  bool m_isRunning = false;
  std::shared_ptr<const std::vector<CString>> m_names;
  std::shared_ptr<Values> m_values;  // the floats change under the sequence number
  std::vector<std::shared_ptr<const CLastLog>> m_logs;
  std::vector<std::shared_ptr<const CKeptMessage>> m_messages;  // a ring
  std::size_t m_oldest = 0;                                     // in m_messages once it is full
};

}  // namespace vastra
