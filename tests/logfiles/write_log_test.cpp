// The file link as a writer: when a log reaches the disk, its name, and which logs are removed.
#include <cmath>
#include <optional>

#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

constexpr const char *kLog = "0109090100.rph", *kCsv = "0109090100h.csv";

class WriteLog : public CLinkFixture {
 protected:
  // Opens a writer of both forms and writes the two samples of the example.
  void GatherExample() {
    auto config = Writer();
    config->m_saveCsv = 1;
    ASSERT_TRUE(Open(std::move(config)));
    CLogSample first = Sample(1000000000, {1.5f, -2.0f}), second = Sample(1000000060, {2.25f, 0.0f});
    first.m_time.millitm = 250;
    first.m_time.timezone = second.m_time.timezone = -60;
    EXPECT_TRUE(m_link->Write(first) && m_link->Write(second));
    m_recorder.Take();
  }

  // A file of an earlier run, written age seconds before this test.
  void Old(const char* name, int age) {
    WriteBytes(m_dir / name, "old");
    std::filesystem::last_write_time((m_dir / name).Std(), m_begun - std::chrono::seconds(age));
  }

  const std::filesystem::file_time_type m_begun = std::filesystem::file_time_type::clock::now();
};

// A full disk leaves a part of a new log. An old log of the same name stays whole until the new one is.
TEST_F(WriteLog, HasTheBytesOfTheFormatsPageOrReportsADiskThatIsFullAtAnyByte) {
  const std::string log = ExampleLog(), csv = ExampleCsv();
  for (const std::string& old : {std::string(), std::string(1000, 'o')})
    for (std::size_t size = 0; size <= csv.size(); ++size) {
      NewLink();
      for (const char* name : {kLog, kCsv})
        if (!old.empty()) WriteBytes(m_dir / name, old);
      GatherExample();
      const bool hasLog = size >= log.size(), hasBoth = size >= csv.size();
      std::optional<CFileSizeLimit> full(size);
      EXPECT_EQ(m_link->Flush(), hasBoth);
      full.reset();
      EXPECT_EQ(m_recorder.TakeFaults(), hasBoth  ? ""
                                         : hasLog ? "Flush Error F Couldn't save CSV file.\n"
                                                  : "Flush Error F Couldn't save file.\n");
      EXPECT_EQ(Bytes(kLog), hasLog ? log : old.empty() ? log.substr(0, size) : old);
      EXPECT_EQ(Bytes(kCsv), hasBoth || (hasLog && old.empty()) ? csv.substr(0, size) : old);
      EXPECT_EQ(Files(), hasLog || !old.empty() ? " 0109090100.rph 0109090100h.csv" : " 0109090100.rph");
      EXPECT_FALSE(m_link->Flush()) << "the samples are lost";
      EXPECT_EQ(m_recorder.TakeFaults(), "Flush Warning F Tried to flush an empty log.\n");
    }
  NewLink();
  GatherExample();
  m_link->Close();
  EXPECT_EQ(Files(), "") << "Close does not flush";
}

TEST_F(WriteLog, OpenRemovesUnfinishedImagesOfItsOwnKindOnly) {
  for (const char* name : {"1.rph.part", "1h.csv.part", "1d.csv.part", "film.part", "x.rph"})
    WriteBytes(m_dir / name, "left");
  Open(Buffer());
  EXPECT_EQ(Files(), " 1.rph.part 1d.csv.part 1h.csv.part film.part x.rph");
  Open(Writer());
  EXPECT_EQ(Files(), " 1d.csv.part film.part x.rph");
}

TEST_F(WriteLog, TheNamingSettingsMakeTheName) {
  const struct {
    const char* variable;
    int dwordName;
    const char* prefix;
    std::initializer_list<float> values;  // of a, b, a, c
    const char* files;
  } kNames[] = {
      {"b", 0, "", {1, -3.7f}, " -3.rph"},
      {"a", 1, "Kiln ", {-1, -2}, " Kiln -1-2.rph"},
      {"c", 1, "", {1, 2, 3, 4}, " 4.rph"},
      {"a", 0, "", {1, 2, 3, 4}, " 1.rph"},  // the first of two
      {"a", 0, "", {4294967295.0f}, " 0.rph"},
      {"a", 0, "", {NAN}, " 0.rph"},
      {"b", 0, "P", {1}, " PNoValue.rph"},  // the sample has no such value
      {"", 0, "P", {1}, " PNoValue.rph"},
      {"System Time", 1, "P", {1}, " P0301021400.rph"},
      {"a", 0, "inner/P", {7}, ""},
  };
  std::filesystem::create_directory((m_dir / "inner").Std());
  for (const auto& name : kNames) {
    NewLink();
    auto config = Writer(1);
    config->m_varNames = Names({"a", "b", "a", "c"});
    config->m_nameVariable = name.variable;
    config->m_dwordName = name.dwordName;
    config->m_prefix = name.prefix;
    config->m_usePrefix = 1;
    ASSERT_TRUE(Open(std::move(config)));
    EXPECT_TRUE(Write(0, name.values));
    EXPECT_EQ(Files(), name.files);
  }
  EXPECT_TRUE(FileExists(m_dir / "inner/P7.rph"));
}

TEST_F(WriteLog, TheNumberContinuesWithinAnHourAndIsZeroForAnotherPrefix) {
  const auto write = [this](int usePrefix, std::int32_t time) {
    auto config = Writer(1);
    config->m_prefix = "P";
    config->m_usePrefix = usePrefix;
    Open(std::move(config));
    Write(time);
  };
  write(0, 0), write(0, 60), Write(3600), write(1, 3601), write(0, 3602);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021401.rph 0301021500.rph P0301021500.rph");
  EXPECT_EQ(Times("0301021500.rph"), " 3602");
}

TEST_F(WriteLog, TheHundredAndFirstLogOfAnHourReplacesTheFirstAndOutlivesItsOldEntry) {
  Open(Writer(1, 101));
  for (int i = 0; i < 101; ++i) Write(i);
  EXPECT_EQ(Times("0301021400.rph"), " 100");
  Write(101);  // replaces 01; the oldest entry, of the former 00, leaves the list
  EXPECT_EQ(Times("0301021400.rph"), " 100");
  EXPECT_EQ(ListFiles(m_dir.Path(), ".rph").GetSize(), 100);
}

TEST_F(WriteLog, LogsOfEarlierRunsAreRemovedByAgeAfterTheNewLogIsWrittenAndEachIsTriedOnce) {
  Old("c.RPH", 40), Old("a.rph", 30), Old("d.rph", 20), Old("b.rph", 20), Old("x.rpd", 90), Old("z.csv", 90);
  Open(Writer(1, 4));
  Write(0);
  EXPECT_EQ(Files(), " 0301021400.rph a.rph b.rph d.rph x.rpd z.csv");
  DeleteFile(m_dir / "a.rph");
  std::filesystem::create_directory((m_dir / "a.rph").Std());  // it cannot be deleted
  Write(1), Write(2);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021401.rph 0301021402.rph d.rph x.rpd z.csv");
  EXPECT_TRUE(FileExists(m_dir / "a.rph"));
  Open(Writer(1, 0));
  Write(3);
  EXPECT_EQ(Files(), " x.rpd z.csv");
}

TEST_F(WriteLog, TextCopiesHaveACountOfTheirOwnThatIncludesThoseOfSummaries) {
  Old("1d.csv", 30), Old("0h.csv", 20);
  auto config = Writer(1, 2);
  config->m_saveCsv = 1;
  Open(std::move(config));
  Write(0);
  EXPECT_EQ(Files(), " 0301021400.rph 0301021400h.csv 0h.csv");
}

// PartialFlush: logs that are on the disk while they grow.
constexpr const char *kSummary = "0301021400.rpd", *kSummaryCsv = "0301021400d.csv";
const std::string kNotSaved = "PartialFlush Error F Couldn't save file.\n";

class SummaryLog : public CLinkFixture {
 protected:
  void OpenSummary(UINT maxSamples = 1000, UINT maxLogs = 1000) {
    auto config = Writer(maxSamples, maxLogs);
    config->m_extension = ".rpd";
    config->m_saveCsv = 1;
    ASSERT_TRUE(Open(std::move(config)));
  }
};

TEST_F(SummaryLog, AGrownLogHasTheBytesOfOneWrittenAtOnceAlsoIfItsTextCouldNotBeSavedAtFirst) {
  OpenSummary();
  for (int i = 0; i < 50; ++i) Write(i);
  EXPECT_TRUE(m_link->Flush());
  const std::string rp = Bytes(kSummary), csv = Bytes(kSummaryCsv);
  NewLink();
  OpenSummary();
  std::filesystem::create_directory((m_dir / kSummaryCsv).Std());
  for (int i = 0; i < 50; ++i) {
    EXPECT_TRUE(Write(i) && m_link->PartialFlush());
    EXPECT_EQ(m_recorder.TakeFaults(), i ? "" : "PartialFlush Error F Couldn't save CSV file.\n");
    EXPECT_TRUE(Times(kSummary).ends_with(" " + std::to_string(i)));
    if (i == 0) std::filesystem::remove((m_dir / kSummaryCsv).Std());
  }
  EXPECT_EQ(Files(), " 0301021400.rpd 0301021400d.csv");
  EXPECT_EQ(Bytes(kSummary), rp);
  EXPECT_EQ(Bytes(kSummaryCsv), csv);
}

// "3" writes a sample at kStart + 3, "p" and "f" are the two flushes, "(" and ")" begin and end a full disk.
TEST_F(SummaryLog, WritesRowsOnceAndInTheirFiles) {
  const std::string empty = "Flush Warning F Tried to flush an empty log.\n";
  const std::string none = "PartialFlush Notice F No samples to write (Probably new file).\n";
  const struct {
    std::string steps, results, faults, logs;  // number and times of each log
    UINT maxSamples = 1000, maxLogs = 1000;
  } kCases[] = {
      {"0p1f2p", "111111", "", "00: 0 1|01: 2|"},
      {"0p1p", "1111", none, "00: 0 1|", 2},
      {"(0p5p)6p", "101011", kNotSaved + kNotSaved, "00: 0 5 6|"},
      {"0p1(p)", "1110", kNotSaved, "00: 0|"},
      {"0p1(f)f", "11110", kNotSaved + empty, "00: 0|"},
      {"0p1p2p3p4p5p6p", "11111111111111", none + none, "01: 3 4 5|02: 6|", 3, 2},
  };
  for (const auto& row : kCases) {
    NewLink();
    OpenSummary(row.maxSamples, row.maxLogs);
    std::string results, logs, files;
    std::optional<CFileSizeLimit> full;
    m_recorder.Take();
    for (const char step : row.steps) {
      if (step == '(') full.emplace(50);
      if (step == ')') full.reset();
      if (step == 'p') results += std::to_string(m_link->PartialFlush());
      if (step == 'f') results += std::to_string(m_link->Flush());
      if (std::isdigit(step)) results += std::to_string(Write(step - '0'));
    }
    EXPECT_EQ(results, row.results);
    EXPECT_EQ(m_recorder.TakeFaults(), row.faults);
    for (const CFileEntry& log : ListFiles(m_dir.Path(), ".rpd")) {
      logs += log.m_name.Mid(8, 2).Std() + ":" + Times(log.m_name) + "|";
      files += " " + log.m_name.Std() + " " + log.m_name.Left(10).Std() + "d.csv";
    }
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(logs, row.logs) << row.steps;
  }
}

}  // namespace
}  // namespace vastra
