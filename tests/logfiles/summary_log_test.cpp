// PartialFlush: logs that are on the disk while they grow.
#include <optional>

#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

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
