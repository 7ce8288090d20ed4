// What a fault at any moment leaves of logs that a keeper keeps. Each test is a sweep over such moments, a
// short one, or all of them if VASTRA_PROVE is set; then it prints what it has seen in a line.
#include <malloc.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>

#include "tests/logfiles/keeper_script.h"
#include "tests/support/faulty_files.h"

namespace vastra {
namespace {

namespace fs = std::filesystem;

constexpr int kRows = 8;    // of a run
constexpr int kKilled = 9;  // exit status of a process that was killed at a call
constexpr std::chrono::seconds kLong{20};
thread_local bool t_isProbing = false;  // the test itself reads files

bool IsLong() { return std::getenv("VASTRA_PROVE") != nullptr; }
// The steps of a sweep; under the sanitizers they are longer.
int Every(int steps) { return IsLong() ? 1 : steps * SWEEP_PACE; }

// The folders of the tests are in memory: a sync takes no time.
struct CInMemory {
  CInMemory() { ::setenv("TMPDIR", fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp", 0); }
};

class Keeper : private CInMemory, public CLogFixture {
 protected:
  Keeper() { MakeFolder(); }

  CString Folder() const { return m_dir / "logs"; }
  // Makes the folder, with the files of from.
  void MakeFolder(const CString& from = "") {
    fs::remove_all(Folder().Std());
    fs::create_directory(Folder().Std());
    if (!from.IsEmpty()) Copy(from, Folder());
    m_recorder.Take();
  }
  static void Copy(const CString& from, const CString& to) {
    fs::copy(from.Std(), to.Std());
    for (const auto& file : fs::directory_iterator(from.Std()))
      fs::last_write_time(fs::path(to.Std()) / file.path().filename(), file.last_write_time());
  }
  static void WriteRows(CScript& script, int first, std::chrono::milliseconds patience) {
    for (int row = first; row < first + kRows; ++row) script.Write(row), script.Settle(patience);
  }

  // Runs body in a process of its own. Returns whether it has come to its end.
  template <class T>
  static bool InChild(const T& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
      body();
      std::fflush(nullptr);
      ::_exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == kKilled) << "see above";
    return WEXITSTATUS(status) == 0;
  }
  // Files in a child, which is killed at the nth call.
  struct CKillingFiles : CFaultyFiles {
    CKillingFiles(const CString& folder, int nth) : CFaultyFiles(folder) {
      Add({.nth = static_cast<std::uint64_t>(nth), .hook = [] { ::_exit(kKilled); }});
    }
  };
  // What a kill at the end of a run of kRows rows leaves: a log with its journal, and journals without logs.
  CString KilledFolder() {
    MakeFolder();
    InChild([&] {
      CFaultyFiles files(Folder());
      CScript script(Folder());
      WriteRows(script, 0, kLong);
      files.Add({.kind = callRemove, .nth = files.Count(callRemove) + 1, .hook = [] { ::_exit(kKilled); }});
      script.Close();
    });
    fs::rename(Folder().Std(), (m_dir / "killed").Std());
    return m_dir / "killed";
  }

  // A run that only recovers.
  void Recover() {
    const CRowsOfLogs before = ReadLogs(Folder(), false);
    CScript script(Folder());
    script.Close();
    const std::vector<CLogLedger> ledgers = script.Ledgers();
    const CRowsOfLogs after = ReadLogs(Folder(), true);
    for (std::size_t i = 0; i < after.size(); ++i) {
      EXPECT_EQ(ledgers[i].onDisk, ledgers[i].recovered);
      EXPECT_TRUE(i == kRotated || after[i].size() == before[i].size() + ledgers[i].recovered)
          << kEachKind[i].prefix << ": recovered " << ledgers[i].recovered << " to " << before[i].size();
    }
  }
  // Checks that the folder has, of each log, the rows from 0 to before end, and perhaps one more.
  void CheckRows(int end, const std::string& what) {
    SCOPED_TRACE(what);
    const CRowsOfLogs all = ReadLogs(Folder(), true);
    for (std::size_t i = 0; i < all.size(); ++i) {
      SCOPED_TRACE(kEachKind[i].prefix);
      EXPECT_TRUE(all[i].empty() || all[i].back() <= end) << all[i].back();
      CheckThere(i, all[i], 0, end);
    }
    ++m_runs;
  }
  // Checks that only the newest log of those that are named by time is not full.
  void CheckFull() {
    const CRowsOfLogs all = ReadLogs(Folder(), true);
    for (std::size_t i = 0; i < all.size(); ++i) {
      const CScriptLog& log = kEachKind[i];
      if (log.IsSummary() || !log.Naming("").ByTime()) continue;
      std::size_t logs = 0;
      for (const CFileEntry& file : ListFiles(Folder(), ""))
        logs += log.Naming("").IsOwnFile(file.m_name).has_value();
      EXPECT_EQ(logs, (all[i].size() + log.maxSamples - 1) / log.maxSamples) << log.prefix;
    }
  }
  // Checks that rows of a log has those from begin to before end, unless the ledger calls them lost. Of a log
  // that rotates, only those that the newest two logs have for certain: an older one can stay after a fault.
  static void CheckThere(std::size_t log, const CRows& rows, int begin, int end,
                         const CLogLedger& ledger = {}) {
    if (log == kRotated) begin = std::max(begin, rows.empty() ? end - 1 : std::max(rows.back() - 2, end - 3));
    for (int row = begin; row < end; ++row) {
      const bool isLost =
          std::any_of(ledger.losses.begin(), ledger.losses.end(), [row](const CLogLoss& loss) {
            return row >= loss.first.time - kStart && row <= loss.last.time - kStart;
          });
      EXPECT_TRUE(isLost || std::binary_search(rows.begin(), rows.end(), row))
          << "row " << row << " is missing in " << testing::PrintToString(rows);
    }
  }

  // Prints the result of the long form.
  void Claim(const char* name, const std::string& figure) const {
    if (!IsLong() || HasFailure()) return;
    std::string runs = std::to_string(m_runs);
    for (std::size_t i = runs.size(); i > 3; i -= 3) runs.insert(i - 3, ",");
    std::printf("claim: %s: %s %s\n", name, runs.c_str(), figure.c_str());
  }

  int m_runs = 0;
};

struct CFaultMode {
  int error;
  bool forGood, passes;  // passes: before the end of the run
};
constexpr CFaultMode kFaultModes[] = {{EIO, false, true},   {ENOSPC, false, true}, {EIO, true, true},
                                      {ENOSPC, true, true}, {EIO, true, false},    {ENOSPC, true, false}};

TEST_F(Keeper, AFileCallThatFailsLosesNoRowThatIsNotCounted) {
  const CString killed = KilledFolder();
  for (const bool isKilled : {false, true})
    for (const CFaultMode& mode : kFaultModes)
      for (int nth = 1, calls = 1; nth <= calls; nth += Every(61), ++m_runs) {
        SCOPED_TRACE("call " + std::to_string(nth) + ", errno " + std::to_string(mode.error) +
                     (mode.forGood ? mode.passes ? " for a while" : " for good" : "") +
                     (isKilled ? ", after a kill" : ""));
        MakeFolder(isKilled ? killed : "");
        const CRowsOfLogs before = ReadLogs(Folder(), false);
        const int first = isKilled ? kRows : 0;
        std::vector<CLogLedger> ledgers;
        {
          CFaultyFiles files(Folder());
          files.Add({callAny, static_cast<std::uint64_t>(nth), mode.error, mode.forGood});
          CLogPolicy policy = ScriptPolicy();
          if (!mode.passes) policy.closeWithin = std::chrono::milliseconds(20);
          CScript script(Folder(), policy);
          EXPECT_TRUE(script.IsOpen() || !m_recorder.TakeFaults().empty());
          script.Open();  // again, what was refused
          WriteRows(script, first, std::chrono::milliseconds(mode.forGood ? 1 : 3));
          if (mode.passes) files.RemoveFaults();
          script.Close();
          ledgers = script.Ledgers();
          calls = static_cast<int>(files.Count());
        }
        const CRowsOfLogs after = ReadLogs(Folder(), false);
        CScript second(Folder());
        second.Close();
        const std::vector<CLogLedger> seconds = second.Ledgers();
        const CRowsOfLogs last = ReadLogs(Folder(), true, kEachKind, true);
        for (std::size_t i = 0; i < last.size(); ++i) {
          SCOPED_TRACE(kEachKind[i].prefix);
          const CLogLedger& ledger = ledgers[i];
          const std::uint64_t counted = before[i].size() + ledger.onDisk - ledger.rotated;
          const std::uint64_t extra = after[i].size() - counted;  // renamed, but not synced
          EXPECT_TRUE(!mode.passes || ledger.lost + ledger.inMemory + ledger.inJournal == 0);
          if (i != kRotated) {
            EXPECT_EQ(after[i].size(), mode.passes ? counted : after[i].size());
            EXPECT_EQ(last[i].size(), after[i].size() + seconds[i].recovered);
            // What the run could not read stays for the next one. What a file or journal has that could not
            // be synced is more than was counted.
            const auto left = static_cast<std::uint64_t>(first) - before[i].size() - ledger.recovered;
            const std::uint64_t more = extra + seconds[i].recovered - ledger.inJournal - left;
            EXPECT_LE(more, ledger.lost);
          }
          // A full disk costs old logs; an old journal that could not be read becomes the newest log.
          const bool isLate = i == kRotated && seconds[i].recovered > ledger.inJournal;
          const int begin = isLate                            ? first + kRows - 2
                            : ledger.rotated && i != kRotated ? last[i].front()
                                                              : 0;
          CheckThere(i, last[i], begin, ledger.taken ? first + kRows : first, ledger);
        }
        if (HasFailure()) return;
      }
  Claim("file calls failing", "runs, 0 rows missing that were not counted as lost");
}

TEST_F(Keeper, AKillAtAnyFileCallLosesNoRow) {
  auto* rows = static_cast<int*>(
      ::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  bool isEnded = false;
  for (int nth = 1; !isEnded; nth += Every(41)) {
    MakeFolder();
    *rows = 0;
    isEnded = InChild([&] {
      CKillingFiles files(Folder(), nth);
      CScript script(Folder());
      for (int row = 0; row < kRows; ++row) {
        script.Write(row);
        if (script.Settle(kLong)) *rows = row + 1;
      }
      script.Close();
    });
    // Each of some kills is followed by kills at each call of the recovery, the others by one.
    fs::remove_all((m_dir / "killed").Std());
    Copy(Folder(), m_dir / "killed");
    const bool isEach = nth % (IsLong() ? 64 : 128) == 1;
    bool isRecovered = false;
    for (int second = isEach ? 1 : nth % 50 + 1; !isRecovered; second += Every(41)) {
      MakeFolder(m_dir / "killed");
      isRecovered = InChild([&] {
        CKillingFiles files(Folder(), second);
        CScript script(Folder());
      });
      Recover();
      CheckRows(*rows, "killed at call " + std::to_string(nth) + " and call " + std::to_string(second));
      {
        CScript script(Folder());  // goes on with the logs that are not full
        WriteRows(script, 2 * kRows, kLong);
      }
      CheckFull();
      if (HasFailure()) return;
      isRecovered |= !isEach;
    }
  }
  ::munmap(rows, sizeof(int));
  Claim("kills at file calls", "runs, 0 rows missing, 0 twice");
}

TEST_F(Keeper, APowerCutAtAnyFileCallLosesNoRowThatWasSynced) {
  const CString killed = KilledFolder();
  for (const bool isKilled : {false, true}) {
    MakeFolder(isKilled ? killed : "");
    std::vector<std::pair<CString, int>> images;  // and the rows that had been synced
    std::mutex mutex;
    std::atomic<int> rows{isKilled ? kRows : 0};
    std::atomic<unsigned> call{0};
    {
      CFaultyFiles files(Folder());
      const auto cut = [&] {
        if (t_isProbing || ++call % static_cast<unsigned>(Every(71)) != 0) return;
        for (int kind = 0; kind < cutKinds; ++kind) {
          const std::lock_guard lock(mutex);
          images.emplace_back(m_dir / ("cut" + std::to_string(images.size())).c_str(), rows);
          files.CutPower(static_cast<EPowerCut>(kind), images.back().first, call);
        }
      };
      files.Add({.nth = 1, .forGood = true, .hook = cut});
      const CString probe = m_dir / "probe";
      const auto areSynced = [&](int end) {
        files.CutPower(cutNothing, probe);
        t_isProbing = true;
        CRowsOfLogs all = ReadLogs(probe, false);
        AddJournals(probe, all);
        t_isProbing = false;
        fs::remove_all(probe.Std());
        return std::all_of(all.begin(), all.end(), [end](const CRows& found) {
          return !found.empty() && *std::max_element(found.begin(), found.end()) == end - 1;
        });
      };
      CScript script(Folder());
      for (const int end = rows + kRows; rows < end; ++rows) {
        script.Write(rows);
        const auto patience = std::chrono::steady_clock::now() + kLong;
        while (!areSynced(rows + 1) && std::chrono::steady_clock::now() < patience) continue;
        ASSERT_TRUE(areSynced(rows + 1)) << "row " << rows << " is not synced";
      }
      script.Close();
    }
    for (const auto& [folder, synced] : images) {
      fs::remove_all(Folder().Std());
      fs::rename(folder.Std(), Folder().Std());
      Recover();
      CheckRows(synced, folder.Std());
      if (HasFailure()) return;
    }
  }
  Claim("power cuts at file calls, five patterns", "images, 0 synced rows missing, 0 files not whole");
}

// The log and its journal after a kill between the rename of the log and the removal of its journal.
TEST_F(Keeper, AFileCutAtAnyByteIsRecoveredUpToThere) {
  const CScriptLogs logs = {{"r", "System Time", ".rph", true, false, 5, 1}};
  InChild([&] {
    CFaultyFiles files(Folder());
    files.Add({.kind = callRemove, .hook = [] { ::_exit(kKilled); }});
    CScript script(Folder(), ScriptPolicy(), logs);
    for (int row = 0; row < 4; ++row) script.Write(row), script.Settle(kLong);
    script.Close();
  });
  const std::string log = Folder().Std() + "/r0301021400.rph", bytes = ReadBytes(CString(log));
  const CString saved = m_dir / "saved";
  fs::rename(Folder().Std(), saved.Std());
  for (std::size_t cut = 0; cut < bytes.size(); cut += static_cast<std::size_t>(Every(7)), ++m_runs) {
    MakeFolder(saved);
    fs::resize_file(log, cut);
    EXPECT_FALSE(IsWholeLog(CString(log), ELogForm::binary)) << cut;
    { CScript script(Folder(), ScriptPolicy(), logs); }
    EXPECT_EQ(ReadBytes(CString(log)), bytes.substr(0, cut)) << "counted by the rotation, or written over";
    DeleteFile(CString(log));
    EXPECT_EQ(ReadLogs(Folder(), true, logs)[0], CRows({0, 1, 2, 3})) << cut;
  }
  const CJournalEntry entry = ListJournals(saved).at(0);
  const std::string journal = (Folder() + "/" + JournalFile(entry.key, entry.number)).Std();
  fs::remove(saved.Std() + "/r0301021400.rph");
  const std::size_t size = fs::file_size(saved.Std() + journal.substr(Folder().Std().size()));
  // Four records of samples, which have two values, and one with the name.
  constexpr std::size_t kSample = 9 + 12 + 2 + 8, kName = 9 + 1 + 11 + 12 + 8;
  for (std::size_t cut = 0; cut < size; cut += static_cast<std::size_t>(Every(7)), ++m_runs) {
    MakeFolder(saved);
    fs::resize_file(journal, cut);
    { CScript script(Folder(), ScriptPolicy(), logs); }
    CRows rows;
    for (std::size_t row = 0; row < 4; ++row)
      if (cut >= size - kName - (3 - row) * kSample) rows.push_back(static_cast<int>(row));
    EXPECT_EQ(ReadLogs(Folder(), true, logs)[0], rows) << cut;
  }
  Claim("logs and journals cut at each byte", "runs, 0 whole rows missing");
}

void SetZone(const char* zone) {
  ::setenv("TZ", zone, 1);
  ::tzset();
}

TEST_F(Keeper, AClockThatIsSetOrChangesItsHourLosesNoRow) {
  const CScriptLogs logs = {{"b", "System Time", ".rph", true, false, 7},
                            {"t", "System Time", ".rph", false, true, 7}};
  constexpr std::int64_t kHour = 3600, kDay = 24 * kHour, kNow = 1785500000;
  struct CWalk {
    const char* zone;
    std::int64_t from, pace;
    std::vector<std::int64_t> steps;  // of the clock, after each kRows rows
  };
  std::vector<CWalk> walks;
  const std::int64_t kSteps[] = {1, 2, kHour, kDay, kNow - 100, INT32_MAX - kNow + kDay};
  for (const std::int64_t step : kSteps)
    for (const int sign : {-1, 1})
      walks.push_back({"CET-1CEST,M3.5.0,M10.5.0/3", kNow, 1, {sign * step, -sign * step}});
  const char* kZones[] = {"CET-1CEST,M3.5.0,M10.5.0/3",  "EST5EDT,M3.2.0,M11.1.0",
                          "GMT0BST,M3.5.0/1,M10.5.0",    "AEST-10AEDT,M10.1.0,M4.1.0/3",
                          "NST3:30NDT,M3.2.0,M11.1.0",   "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
                          "IST-2IDT,M3.4.4/26,M10.5.0",  "<-04>4<-03>,M9.1.6/24,M4.1.6/24",
                          "NZST-12NZDT,M9.5.0,M4.1.0/3", "<-02>2<-01>,M3.5.0/-1,M10.5.0/0"};
  for (const char* zone : kZones) {  // through each change of 2026
    SetZone(zone);
    const auto offset = [](std::int64_t time) { return CTime(time).GetLocalTm().tm_gmtoff; };
    const std::size_t before = walks.size();
    for (std::int64_t time = 1767225600; time < 1767225600 + 365 * kDay; time += kHour)
      if (offset(time) != offset(time + kHour))
        walks.push_back({zone, time - 3 * kHour, 600, std::vector<std::int64_t>(5, 0)});
    EXPECT_EQ(walks.size(), before + 2) << zone;
  }
  for (const CWalk& walk : walks) {
    SCOPED_TRACE(std::string(walk.zone) + ", step " + std::to_string(walk.steps[0]));
    SetZone(walk.zone);
    MakeFolder();
    int row = 0;
    std::int64_t time = walk.from;
    auto script = std::make_unique<CScript>(Folder(), ScriptPolicy(), logs);
    const auto write = [&] {
      for (int i = 0; i < kRows; ++i, time += walk.pace)
        script->Write(row++, static_cast<std::int32_t>(time));
    };
    write();
    for (const std::int64_t step : walk.steps) {
      time += step;
      write();
      if (step != 0) script.reset(), script = std::make_unique<CScript>(Folder(), ScriptPolicy(), logs);
    }
    write();
    script.reset();
    for (const CRows& rows : ReadLogs(Folder(), true, logs)) {
      EXPECT_EQ(static_cast<int>(rows.size()), row);
      m_runs += static_cast<int>(rows.size());
    }
  }
  Claim("steps of the clock and summer time in ten zones", "rows, 0 missing");
}

// Bytes that the process has allocated; 0 under the sanitizers.
std::size_t Allocated() {
  const struct mallinfo2 info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST_F(Keeper, ADayAtASampleASecondHasEachRowAndFlatMemory) {
  constexpr int kHour = 3600, kValues = 20, kLog = kHour * (kValues * 4 + 14);
  const CScriptLogs logs = {{"b", "System Time", ".rph", true, false, kHour}};
  CLogPolicy policy = ScriptPolicy();
  policy.waits = true;  // this clock is faster than a disk
  policy.sync = std::chrono::seconds(5);
  CScript script(Folder(), policy, logs);
  std::size_t early = 0;
  const int hours = IsLong() ? 24 : 12;
  for (int row = 0; row < hours * kHour; ++row, ++m_runs) {
    if (row % kHour == 0) m_recorder.Take();
    if (row == 2 * kHour) early = Allocated();
    script.Write(row, kStart + row, kValues);
  }
  m_recorder.Take();
  EXPECT_LE(Allocated(), early + 4 * kLog);  // what the writer has not written yet, too
  script.Close();
  const CRows rows = ReadLogs(Folder(), true, logs)[0];
  EXPECT_EQ(rows.back() + 1, m_runs);  // in order, none twice
  EXPECT_EQ(static_cast<int>(rows.size()), m_runs);
  Claim("a day at a sample a second", "rows, 0 missing, flat memory");
}

}  // namespace
}  // namespace vastra
