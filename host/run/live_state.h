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

// What changes with each scan.
struct CLiveNumbers {
  std::uint64_t samples = 0;  // with these names; 0: time and values are not set
  std::uint64_t number = 0;   // of the newest sample of the run, from 1
  _timeb time{};
  std::chrono::steady_clock::time_point read{};  // when the run had the newest sample; zero: there was none
  std::vector<float> values;                     // one for each name, once there is a sample
  CRunCounts counts;
};

// For a reader that looks often: what is large and changes seldom is shared.
struct CLiveNewest : CLiveNumbers {
  std::shared_ptr<const std::vector<CString>> names;       // null before the first start
  std::shared_ptr<const std::vector<CRunLedger>> ledger;   // copied a few times a second; can be null
  std::shared_ptr<const std::vector<CNodeState>> nodes;    // that are read; can be null
  std::shared_ptr<const std::vector<CNodeState>> written;  // nodes that are written; can be null
  std::vector<std::shared_ptr<const CLastLog>> saved;      // the last file of each source that has one
  // The files that could not be saved when that was last tried: of each source at most one of each form.
  std::vector<std::shared_ptr<const CLastLog>> unsaved;
};

struct CLiveSnapshot : CLiveNumbers {
  bool isRunning = false;
  std::vector<CString> names;
  std::vector<std::shared_ptr<const CLastLog>> logs;          // of each source that has one
  std::vector<std::shared_ptr<const CKeptMessage>> messages;  // the last ones, oldest first
};

class CLiveState : public CRunObserver {
 public:
  static constexpr std::size_t kMessages = 100;  // that are kept

  // The present state; from any thread.
  CLiveSnapshot Snapshot() const;
  // The same for a reader that uses newest again and again, so that no copy allocates. False: the run has
  // stored samples all the time; the numbers are not set.
  bool CopyNewest(CLiveNewest& newest) const;

  // By the run, on its thread.
  void SetLedger(std::shared_ptr<const std::vector<CRunLedger>> ledger);
  void SetNodes(std::vector<CNodeState> nodes, std::vector<CNodeState> written);
  // Forgets the files that could not be saved except those at paths: LogClosed was missed.
  void KeepUnsaved(const std::vector<CString>& paths);

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
    std::uint64_t samples = 0, number = 0;
    std::chrono::steady_clock::time_point read{};
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
  bool CopyNumbers(const Values& values, CLiveNumbers& numbers) const;
  using Logs = std::vector<std::shared_ptr<const CLastLog>>;
  static void KeepLast(Logs& logs, std::shared_ptr<const CLastLog> log);
  void Keep(const std::shared_ptr<const CLastLog>& log);

  CHead m_head;                                     // the writer's
  std::atomic<std::uint64_t> m_sequence{0};         // odd while the writer stores
  std::array<std::atomic<Word>, kWords> m_words{};  // m_head as the readers see it

  mutable std::mutex m_mutex;  // of what follows
  bool m_isRunning = false;
  std::shared_ptr<const std::vector<CString>> m_names;
  std::shared_ptr<Values> m_values;  // the floats change under the sequence number
  std::shared_ptr<const std::vector<CRunLedger>> m_ledger;
  std::shared_ptr<const std::vector<CNodeState>> m_nodes, m_written;
  std::vector<std::shared_ptr<const CLastLog>> m_logs, m_saved, m_unsaved;
  std::vector<std::shared_ptr<const CKeptMessage>> m_messages;  // a ring
  std::size_t m_oldest = 0;                                     // in m_messages once it is full
};

}  // namespace vastra
