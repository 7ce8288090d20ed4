#include <fcntl.h>

#include "tests/history/hand_over.h"
#include "tests/history/history_fixture.h"
#include "tests/logfiles/example.h"
#include "tests/support/faulty_files.h"
#include "vastra/history/log_scan.h"
#include "vastra/logfiles/journal.h"

namespace vastra {
namespace {

using History = CHistoryFixture;

TEST_F(History, RowsOfLogsThatOverlapAreInOrder) {
  Log("a.rph", Names({"x", "y"}), {{1000, {1, 2}}, {3000, {3, NAN}}, {2000, {5, 6}}, {2000, {7, 8}}});
  Log("b.RPD", Names({"y", "z", "y"}),
      {{2000, {10, 11, 12}}, {2500, {13}}, {4000, {}}, {5001, {14, 15, 16}}});
  Log("c.csv", Names({"x"}), {{1, {1}}});
  Log("d/a.rph", Names({"w"}), {{2000, {20}}});
  const struct {
    CRowRequest request;
    const char* rows;
  } kCases[] = {
      {{},
       "1000:1,2,-,- 2000:5,6,-,- 2000:7,8,-,- 2000:-,10,11,- 2000:-,-,-,20 2500:-,13,-,- 3000:3,nan,-,- "
       "4000:-,-,-,- 5001:-,14,15,- "},
      {{.range = {2000, 2500}}, "2000:5,6,-,- 2000:7,8,-,- 2000:-,10,11,- 2000:-,-,-,20 "},
      {{.range = {4001, 5001}}, ""},
      {{.range = {4001, 5002}}, "5001:14,15 "},
      {{.range = {2001, 5000}, .variables = {"x", "z"}}, "2500:-,- 3000:3,- 4000:-,- "},
      {{.range = {1000, 4000}, .variables = {"w", "x"}}, "1000:-,1 2000:-,5 2000:-,7 2000:20,- 3000:-,3 "},
  };
  for (const auto& each : kCases) EXPECT_EQ(Rows(each.request), each.rows);
}

TEST_F(History, ARowOfTwoLogsIsDroppedOnRequest) {
  const std::vector<CTestRow> rows = {{1000, {1}}, {1000, {1}}, {2000, {2}}, {3000, {NAN}}};
  Log("a.rph", Names({"x"}), rows);
  Log("b.rph", Names({"x"}), rows);
  Log("c.rph", Names({"y"}), rows);
  Log("d.rph", Names({"x"}), {{1000, {1}}, {1000, {1}}, {1000, {1}}, {2000, {-2}}});
  EXPECT_EQ(Rows({.variables = {"x"}, .isUnique = true}), "1000:1 1000:1 1000:1 2000:2 2000:-2 3000:nan ");
  EXPECT_EQ(Rows({.variables = {"y"}, .isUnique = true}), "1000:1 1000:1 2000:2 3000:nan ");
}

// More logs than files may be open, with more samples than are loaded at once.
TEST_F(History, ManyLogsAreReadTogether) {
  constexpr int kLogs = 150, kRows = 500;
  for (int i = 0; i < kLogs; ++i) {
    std::vector<CTestRow> rows;
    for (int row = 0; row < kRows; ++row)
      rows.push_back({row * kLogs + i, std::vector<float>(30, float(row))});
    Log(("log" + std::to_string(i) + ".rph").c_str(), Names({"x"}), rows);
  }
  CRowReader rows(Scanned(), {});
  CHistoryRow row;
  float value = 0;
  CMoment expected = 0;
  for (; rows.Next(row); ++expected)
    ASSERT_TRUE(row.moment == expected && row.Get(0, value) && value == float(expected / kLogs)) << expected;
  EXPECT_EQ(expected, kLogs * kRows);
  EXPECT_TRUE(rows.Faults().empty());
}

// A catalogue and a replay find the same fault in the same bytes.
TEST_F(History, TheFaultOfALogIsThatOfTheReader) {
  const auto compare = [&](const std::string& bytes, const char* where, std::size_t at) {
    WriteBytes(m_dir / "a.rph", bytes);
    CSampleStore samples;
    CLogReader reader(samples);
    const bool isGood = reader.Open(m_dir / "a.rph") && reader.ReadSamples();
    CNamesPool pool;
    const CHistoryLog log = LookAtLog(m_dir / "a.rph", pool);
    EXPECT_EQ(log.fault.Std(), isGood ? "" : reader.GetFault().Std()) << where << at;
    EXPECT_EQ(log.samples, samples.GetCount()) << where << at;
  };
  const std::string whole = ExampleLog();
  for (std::size_t i = 0; i < whole.size(); ++i) compare(whole.substr(0, i), "cut at ", i);
  for (std::size_t i = 20; i < whole.size(); ++i)
    for (const char byte : {'\0', '\1', '\3', '\xFF'}) {
      std::string changed = whole;
      changed[i] = byte;
      if (i >= 37 && i < 57) continue;  // of the counts of records only the size of the file is looked at
      compare(changed, "changed at ", i);
    }
}

// The size of the log is that of even records.
TEST_F(History, UnevenRecordsAreFoundWhenTheyAreRead) {
  Log("a.rph", Names({"x", "y"}), {{1000, {1, 2}}, {2000, {3}}, {3000, {4, 5, 6}}, {4000, {7, 8}}});
  EXPECT_EQ(Rows(), "1000:1,2 2000:3,- 3000:4,5 4000:7,8 ");
  std::string bytes = Written(Names({"x"}), StoreOf(Count(1, 3)));
  bytes[bytes.find(Raw(3.0F)) - 2] = 9;
  WriteBytes(m_dir / "a.rph", bytes);
  EXPECT_EQ(Rows(), "a.rph has only 0 times for its 3 samples (byte 79) ");
}

TEST_F(History, ARescanFollowsTheFolder) {
  Log("a.rph", Names({"x"}), Count(1, 2));
  Log("s/b.rph", Names({"x"}), Count(5, 1));
  EXPECT_EQ(Listed(), "a.rph:2@1000-2000 b.rph:1@5000-5000 ");
  Log("a.rph", Names({"x"}), Count(1, 3));
  Log("s/a.rph", Names({"x"}), Count(7, 1));
  WriteBytes(m_dir / "c.rph", "?");
  EXPECT_EQ(Listed(),
            "a.rph:3@1000-3000 c.rph!ends at byte 1 inside the start (from byte 0 on) "
            "a.rph:1@7000-7000 b.rph:1@5000-5000 ");
  std::filesystem::remove_all((m_dir / "s").Std());
  DeleteFile(m_dir / "a.rph");
  Log("c.rph", Names({"x"}), Count(9, 1));
  EXPECT_EQ(Listed(), "c.rph:1@9000-9000 ");
}

// Nothing is opened that has not changed.
TEST_F(History, ARescanWithoutChangesOpensNoLog) {
  Log("a.rph", Names({"x"}), Count(1, 2));
  std::filesystem::last_write_time((m_dir / "a.rph").Std(),
                                   std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  Scanned();
  CFaultyFiles files(Folder());
  Scanned();
  EXPECT_EQ(files.Count(callOpen), 0u);
  EXPECT_EQ(files.Count(callRead), 0u);
}

TEST_F(History, FilesAreNamedOnceEach) {
  Log("a.rph", Names({"x"}), Count(1, 1));
  Log("other", Names({"x"}), Count(2, 1));
  CCatalogue named;
  for (const CString& path : {m_dir / "other", m_dir / "a.rph", Folder(), m_dir / "./other", m_dir / "none"})
    named.Add(path, false);
  named.Scan();
  std::string text;
  for (const CHistoryLog& log : named.Logs()) text += FileName(log.path) + ":" + log.fault.Std() + " ";
  EXPECT_EQ(text, "other: a.rph: none:No such file or directory ");
}

// What happens to a log after it was listed, and what is read of it.
TEST_F(History, ALogThatChangesWhileItIsRead) {
  const CString path = m_dir / "a.rph";
  const char* kReplaced = "a.rph was replaced by another log after it was listed ";
  const struct {
    std::function<void()> change;
    std::string rows;
  } kCases[] = {
      {[&] { DeleteFile(path); }, "a.rph was removed after it was listed "},
      {[&] { WriteBytes(path, "?"); }, "a.rph ends at byte 1 inside the start (from byte 0 on) "},
      {[&] { Log("a.rph", Names({"x"}), Count(1, 4)); }, "1000:1 2000:2 3000:3 "},  // it has grown
      {[&] { Log("a.rph", Names({"x"}), Count(1, 2)); }, kReplaced},
      {[&] { Log("a.rph", Names({"x"}), Count(2, 3)); }, kReplaced},
      {[&] { Log("a.rph", Names({"y"}), Count(1, 3)); }, kReplaced},
  };
  for (const auto& each : kCases) {
    Log("a.rph", Names({"x"}), Count(1, 3));
    CRowReader rows(Scanned(), {});
    each.change();
    EXPECT_EQ(Text(std::move(rows)), each.rows);
  }
}

TEST_F(History, Gaps) {
  Log("a.rph", Names({"x"}), {{1000, {1}}, {9000, {1}}, {2000, {1}}});
  Log("b.rph", Names({"x"}), {{5000, {1}}, {6000, {1}}, {20000, {1}}});
  const auto gaps = [&](CMomentRange range, std::int64_t longerThan) {
    std::string text;
    for (const CGap& gap : FindGaps(Scanned(), range, longerThan))
      text += std::to_string(gap.from) + "-" + std::to_string(gap.to) + " ";
    return text;
  };
  EXPECT_EQ(gaps({1000, 20001}, 2999), "2000-5000 6000-9000 9000-20000 ");
  EXPECT_EQ(gaps({1000, 20001}, 3000), "9000-20000 ");
  EXPECT_EQ(gaps({0, 30000}, 9000), "9000-20000 20000-30000 ");
  EXPECT_EQ(gaps({2001, 5000}, 0), "2001-5000 ");
}

TEST_F(History, EachSampleIsSeenOnceWhileALoggerGoesOn) {
  const auto count = [&](int atLeast, int atMost, std::uint64_t call) {
    CHistoryRow row;
    CRowReader rows(m_catalogue.Logs(), {});
    int next = 0;
    while (rows.Next(row)) EXPECT_EQ(row.moment, 1000 * next++) << "call " << call;
    EXPECT_GE(next, atLeast) << "call " << call;
    EXPECT_LE(next, atMost) << "call " << call;
  };
  CHandOver logger(Folder());
  // The logger makes one step at the nth call for files of each scan, for all n.
  const std::vector<std::function<void()>> kSteps = {[&] { logger.Keep(2); },
                                                     [&] { logger.Save(); },
                                                     [&] { logger.End(); },
                                                     [&] { logger.Keep(1); },
                                                     [&] { logger.Keep(1); },
                                                     [&] {
                                                       logger.Save();
                                                       logger.End();
                                                     }};
  for (std::uint64_t call = 1; call < 30; ++call)
    for (const auto& step : kSteps) {
      const int before = logger.Kept();
      bool isDone = false, isInside = false;
      {
        CFaultyFiles files(Folder());
        const auto hook = [&] {
          if (std::exchange(isInside, true)) return;
          step();
          isDone = true;
        };
        files.Add({.nth = call, .hook = hook});
        m_catalogue.Scan();
      }
      if (!isDone) step();
      count(before, logger.Kept(), call);
      m_catalogue.Scan();
      count(logger.Kept(), logger.Kept(), call);
    }
}

}  // namespace
}  // namespace vastra
