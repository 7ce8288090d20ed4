#include <fcntl.h>
#include <sys/stat.h>

#include <random>

#include "tests/history/history_fixture.h"
#include "tests/logfiles/example.h"
#include "vastra/history/folder_digest.h"

namespace vastra {
namespace {

// "part:rows" and for each variable "(count nan inf least greatest mean first last)".
std::string Text(CBucketReader&& reader) {
  std::string text;
  CBucketPart part;
  char bucket[256];
  while (reader.Next(part)) {
    text += std::to_string(part.index) + ":" + std::to_string(part.rows);
    for (const CBucket& each : part.buckets) {
      std::snprintf(bucket, sizeof bucket, "(%d %d %d %g %g %.12g %g %g)", int(each.values), int(each.nans),
                    int(each.infinities), double(each.least), double(each.greatest), each.Mean(),
                    double(each.first), double(each.last));
      text += bucket;
    }
    text += " ";
  }
  for (const CHistoryFault& fault : reader.Faults()) text += fault.path.Std() + " " + fault.fault.Std() + " ";
  return text;
}

class Buckets : public CHistoryFixture {
 protected:
  std::string Read(CMomentRange range, std::uint64_t parts, bool useDigests = false) {
    return Text(CBucketReader(Scanned(), {.range = range, .parts = parts, .useDigests = useDigests}));
  }
  // 40 logs of up to 400 rows, some of which overlap.
  void FillFolder() {
    std::mt19937 random(7);
    CMoment moment = 0;
    for (int log = 0; log < 40; ++log) {
      std::vector<CTestRow> rows;
      if (random() % 8 == 0) moment -= 50'000;
      for (auto count = random() % 400; count > 0; --count, moment += static_cast<CMoment>(random() % 1000))
        rows.push_back({moment, {static_cast<float>(random() % 1000), random() % 9 ? 1e20F : -1e20F}});
      Log(("log" + std::to_string(log) + ".rph").c_str(), Names({"x", "y"}), rows);
    }
  }
};

TEST_F(Buckets, OnlyFiniteValuesCountAndNoDigitOfTheSumIsLost) {
  Log("a.rph", Names({"x", "y"}),
      {{0, {NAN, 1e30F}}, {1, {3, 1}}, {2, {INFINITY, -1e30F}}, {3, {1}}, {9, {-INFINITY}}});
  EXPECT_EQ(Read({0, 10}, 2),
            "0:4(2 1 1 1 3 2 3 1)(3 0 0 -1e+30 1e+30 0.333333333333 1e+30 -1e+30) "
            "1:1(0 0 1 0 0 0 0 0)(0 0 0 0 0 0 0 0) ");
  EXPECT_EQ(Read({1, 4}, 1), "0:3(2 0 1 1 3 2 3 1)(2 0 0 -1e+30 1 -5.00000007524e+29 1 -1e+30) ");
}

// Part i of n begins at floor(i * length / n), also where a part is shorter than a millisecond.
TEST_F(Buckets, EachRowIsInThePartOfItsMoment) {
  std::vector<CTestRow> rows;
  for (CMoment moment = 0; moment < 50; ++moment) rows.push_back({moment, {1}});
  Log("a.rph", Names({"x"}), rows);
  for (CMoment to = 1; to < 50; ++to)
    for (const std::uint64_t parts : {1, 2, 3, 7, 49, 50, 1000}) {
      CBucketReader reader(Scanned(), {.range = {0, to}, .parts = parts});
      CBucketPart part;
      CMoment next = 0;
      for (; reader.Next(part); next = part.to) {
        EXPECT_EQ(part.from, next) << to << " in " << parts;
        EXPECT_EQ(part.from, static_cast<CMoment>(part.index * static_cast<std::uint64_t>(to) / parts));
        EXPECT_EQ(part.rows, static_cast<std::uint64_t>(part.to - part.from));
      }
      EXPECT_EQ(next, to);
    }
}

TEST_F(Buckets, ADigestChangesNothing) {
  FillFolder();
  const CMoment end = RangeOf(Scanned()).to;
  const auto all = [&](bool useDigests) {
    std::string text;
    for (const CMomentRange range : {CMomentRange{0, end}, {end / 3 + 1, end / 2}})
      for (const std::uint64_t parts : {1, 13, 700}) text += Read(range, parts, useDigests) + "\n";
    return text;
  };
  const std::string expected = all(false);
  EXPECT_TRUE(UpdateDigests(Scanned()).empty());
  EXPECT_EQ(all(true), expected);
  // Damage at any place is as if the block were not there.
  const CString digest = m_dir / ".vastra-history.digest";
  const std::string bytes = ReadBytes(digest);
  ASSERT_GT(bytes.size(), 1000u);
  for (std::size_t i = 0; i < bytes.size(); i += bytes.size() / 60) {
    std::string damaged = bytes;
    damaged[i] ^= 0x40;
    WriteBytes(digest, i % 3 ? damaged : bytes.substr(0, i));
    ASSERT_EQ(all(true), expected) << i;
  }
  EXPECT_TRUE(UpdateDigests(Scanned()).empty());
  EXPECT_EQ(ReadBytes(digest), bytes) << "it was not made again";
}

// The values of a log that is in the digest are not read, except where parts meet; of one that was written
// since, they are.
TEST_F(Buckets, ADigestIsUsedAsLongAsItsLogStays) {
  const auto path = std::filesystem::path((m_dir / "a.rph").Std());
  std::vector<CTestRow> rows = Count(0, 1024);
  Log("a.rph", Names({"x"}), rows);
  UpdateDigests(Scanned());
  const auto time = std::filesystem::last_write_time(path);
  for (CTestRow& row : rows) row.values[0] += 5000;
  Log("a.rph", Names({"x"}), rows);
  std::filesystem::last_write_time(path, time);
  const CMomentRange range = {0, 1'024'000};
  const char *before = "0:1024(1024 0 0 0 1023 511.5 0 1023) ",
             *now = "0:1024(1024 0 0 5000 6023 5511.5 5000 6023) ";
  EXPECT_EQ(Read(range, 1), now);
  EXPECT_EQ(Read(range, 1, true), before);
  std::filesystem::last_write_time(path, time + std::chrono::hours(1));
  EXPECT_EQ(Read(range, 1, true), now);
}

// Of a log in the digest the catalogue reads the first and the last time, and no other: one between them is
// damaged here. Of a log that was written since it reads all.
TEST_F(Buckets, ACatalogueNeedsFewTimesOfALogInTheDigest) {
  const auto listed = [&] {
    std::map<std::string, std::string> logs;
    CCatalogue catalogue;
    catalogue.Add(Folder(), false);
    catalogue.Scan();
    for (const CHistoryLog& log : catalogue.Logs())
      logs[log.path.Std()] = std::to_string(log.samples) + "@" + std::to_string(log.first) + "-" +
                             std::to_string(log.last) + "/" + std::to_string(log.start.time) +
                             (log.isOrdered ? "" : "!");
    return logs;
  };
  FillFolder();
  Log("b.rph", Names({"x"}), {{5000, {1}}, {4000, {2}}, {6000, {3}}});
  std::map<std::string, std::string> expected = listed();
  EXPECT_EQ(expected[(m_dir / "b.rph").Std()], "3@4000-6000/5!");
  UpdateDigests(Scanned());
  EXPECT_EQ(listed(), expected);
  const auto flip = [](const CHistoryLog& log, bool keepsTime) {
    const auto time = std::filesystem::last_write_time(log.path.Std());
    std::string bytes = ReadBytes(log.path);
    bytes[log.layout->times + sizeof(_timeb) + 3] ^= 0x40;  // of the second sample
    WriteBytes(log.path, bytes);
    std::filesystem::last_write_time(log.path.Std(), time + std::chrono::hours(keepsTime ? 0 : 1));
  };
  for (const bool keepsTime : {true, false}) {
    for (const CHistoryLog& log : m_catalogue.Logs())
      if (log.samples > 2 && log.isOrdered) flip(log, keepsTime);
    EXPECT_EQ(listed() == expected, keepsTime);
    for (const CHistoryLog& log : m_catalogue.Logs())
      if (log.samples > 2 && log.isOrdered) flip(log, true);  // as it was
  }
}

TEST_F(Buckets, TheExampleOfADigestIsRight) {
  Log("a.rph", Names({"x"}), {{1'000'000'000'250, {1.5F}}, {1'000'000'060'000, {-2}}});
  const timespec written[2] = {{1'000'000'100, 0}, {1'000'000'100, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, m_dir / "a.rph", written, 0), 0);
  UpdateDigests(Scanned());
  EXPECT_EQ(ReadBytes(m_dir / ".vastra-history.digest"),
            ExampleBytes("### A worked example of a digest", "@end",
                         ReadBytes(VASTRA_DOCS "/history.md") + "@end"));
}

TEST_F(Buckets, ADigestThatCannotBeInItsFolderIsInTheCache) {
  const CString cache = m_dir / "cache";
  ::setenv("XDG_CACHE_HOME", cache, 1);
  Log("logs/a.rph", Names({"x"}), Count(0, 300));
  std::filesystem::create_directory((m_dir / "logs/.vastra-history.digest.part").Std());
  EXPECT_TRUE(UpdateDigests(Scanned()).empty());
  EXPECT_FALSE(FileExists(m_dir / "logs/.vastra-history.digest"));
  EXPECT_NE(Files("cache/vastra/history"), "");
  EXPECT_EQ(Read({0, 300'000}, 1, true), "0:300(300 0 0 0 299 149.5 0 299) ");
  // Neither place: a line that says so.
  std::filesystem::remove_all(cache.Std());
  WriteBytes(cache, "");
  EXPECT_EQ(UpdateDigests(Scanned()).size(), 1u);
}

}  // namespace
}  // namespace vastra
