// PartialFlush: logs that are on the disk while they grow.
#include <optional>
#include <sstream>

#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

constexpr const char* kLog = "0301021400.rpd";
constexpr const char* kCsv = "0301021400d.csv";
const std::string kBoth = std::string(" ") + kLog + " " + kCsv;
const std::string kNotSaved = "PartialFlush Error F Couldn't save file.\n";

class SummaryLog : public CLinkFixture {
 protected:
  void OpenSummary(UINT maxSamples = 1000, UINT maxLogs = 1000) {
    auto config = Writer();
    config->m_extension = ".rpd";
    config->m_saveCsv = 1;
    config->m_maxSamples = maxSamples;
    config->m_maxLogs = maxLogs;
    ASSERT_TRUE(Open(std::move(config)));
  }
  int Grow(std::int32_t time) {
    return Write(time, {static_cast<float>(time), -0.5f}) && m_link->PartialFlush();
  }
};

TEST_F(SummaryLog, AGrownLogHasTheBytesOfOneWrittenAtOnce) {
  OpenSummary();
  for (int i = 0; i < 50; ++i) Write(i, {static_cast<float>(i), -0.5f});
  EXPECT_TRUE(m_link->Flush());
  const std::string rp = Bytes(kLog), csv = Bytes(kCsv);
  NewLink();
  OpenSummary();
  for (int i = 0; i < 50; ++i) {
    EXPECT_TRUE(Grow(i));
    EXPECT_TRUE(Times(kLog).ends_with(" " + std::to_string(i)));
  }
  EXPECT_EQ(Files(), kBoth);
  EXPECT_EQ(Bytes(kLog), rp);
  EXPECT_EQ(Bytes(kCsv), csv);
}

// "3" writes a sample at kStart + 3, "p" and "f" are the two flushes, "(" and ")" begin and end a full disk.
TEST_F(SummaryLog, WritesRowsOnceAndInTheirFiles) {
  const std::string empty = "Flush Warning F Tried to flush an empty log.\n";
  const std::string none = "PartialFlush Notice F No samples to write (Probably new file).\n";
  const struct {
    const char *steps, *results;
    std::string faults;
    std::vector<std::string> times;  // of each log
    UINT maxSamples = 1000, maxLogs = 1000;
  } kCases[] = {
      {"0 p 1 f 2 p", "111111", "", {" 0 1", " 2"}},
      {"0 p 1 p", "1111", none, {" 0 1"}, 2},
      {"( 0 p 3600 p ) 3601 p", "101011", kNotSaved + kNotSaved, {" 0 3600 3601"}},
      {"0 p 1 ( f ) f", "11110", kNotSaved + empty, {" 0"}},
      {"0 p 1 p 2 p 3 p 4 p 5 p 6 p", "11111111111111", none + none, {"", " 3 4 5", " 6"}, 3, 2},
  };
  for (const auto& row : kCases) {
    NewLink();
    OpenSummary(row.maxSamples, row.maxLogs);
    std::istringstream steps(row.steps);
    std::string results, step;
    std::optional<CFileSizeLimit> full;
    m_recorder.Take();
    while (steps >> step) {
      if (step == "(") full.emplace(50);
      if (step == ")") full.reset();
      if (step == "p") results += std::to_string(m_link->PartialFlush());
      if (step == "f") results += std::to_string(m_link->Flush());
      if (std::isdigit(step[0])) results += std::to_string(Write(std::stoi(step)));
    }
    EXPECT_EQ(results, row.results);
    EXPECT_EQ(m_recorder.TakeFaults(), row.faults);
    std::string files;
    for (std::size_t i = 0; i < row.times.size(); ++i) {
      const std::string name = "030102140" + std::to_string(i);
      if (row.times[i].empty()) continue;
      EXPECT_EQ(Times((name + ".rpd").c_str()), row.times[i]) << row.steps;
      files += " " + name + ".rpd " + name + "d.csv";
    }
    EXPECT_EQ(Files(), files) << row.steps;
  }
}

TEST_F(SummaryLog, AFullDiskLeavesTheConfirmedRows) {
  OpenSummary();
  Grow(0);
  Write(1);
  for (std::size_t size = 0; size < Bytes(kLog).size() + 22; ++size) {
    const CFileSizeLimit full(size);
    EXPECT_FALSE(m_link->PartialFlush());
    EXPECT_EQ(Times(kLog), " 0");
    EXPECT_EQ(Files(), kBoth);
  }
  EXPECT_TRUE(m_link->PartialFlush());
  EXPECT_EQ(Times(kLog), " 0 1");
}

TEST_F(SummaryLog, ATextCopyThatCannotBeSavedIsNotAFailureAndIsWrittenLater) {
  OpenSummary();
  std::filesystem::create_directory((m_dir / kCsv).Std());
  EXPECT_TRUE(Grow(0));
  EXPECT_EQ(m_recorder.TakeFaults(), "PartialFlush Error F Couldn't save CSV file.\n");
  std::filesystem::remove((m_dir / kCsv).Std());
  Grow(1);
  EXPECT_EQ(Bytes(kCsv),
            "TimeStamp,Temp,Flow,\nThu Jan 02 14:00:00:0  2003,0.000000,-0.500000,\n"
            "Thu Jan 02 14:00:01:0  2003,1.000000,-0.500000,\n");
}

}  // namespace
}  // namespace vastra
