// The file link as a writer: when a log reaches the disk, and what is lost if it cannot.
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
};

TEST_F(WriteLog, HasTheBytesOfTheFormatsPageAndDropsWhatCloseFindsUnflushed) {
  GatherExample();
  m_link->Close();
  EXPECT_EQ(Files(), "");
  GatherExample();
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(Bytes(kLog), ExampleLog());
  EXPECT_EQ(Bytes(kCsv), ExampleCsv());
  EXPECT_EQ(Files(), " 0109090100.rph 0109090100h.csv");
  EXPECT_FALSE(m_link->Flush());
  EXPECT_EQ(m_recorder.TakeFaults(), "Flush Warning F Tried to flush an empty log.\n");
}

// A full disk leaves a part of a new log. An old log of the same name stays whole.
TEST_F(WriteLog, ReportsADiskThatIsFullAtAnyByte) {
  const std::string log = ExampleLog(), csv = ExampleCsv();
  for (const std::string old : {"", "old"})
    for (std::size_t size = 0; size < csv.size(); ++size) {
      NewLink();
      for (const char* name : {kLog, kCsv})
        if (!old.empty()) WriteBytes(m_dir / name, old);
      GatherExample();
      std::optional<CFileSizeLimit> full(size);
      EXPECT_FALSE(m_link->Flush());
      full.reset();
      const bool whole = size >= log.size();
      EXPECT_EQ(m_recorder.TakeFaults(),
                whole ? "Flush Error F Couldn't save CSV file.\n" : "Flush Error F Couldn't save file.\n");
      EXPECT_EQ(Bytes(kLog), whole ? log : old.empty() ? log.substr(0, size) : old);
      EXPECT_EQ(Bytes(kCsv), whole && old.empty() ? csv.substr(0, size) : old);
      EXPECT_FALSE(m_link->Flush()) << "the samples are lost";
    }
  NewLink();
  WriteBytes(m_dir / kCsv, std::string(1000, 'o'));
  GatherExample();
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(Bytes(kCsv), csv);
}

TEST_F(WriteLog, FailsWhileTheDirectoryIsMissingAndThenGoesOn) {
  auto config = Writer();
  config->m_directory = m_dir / "inner";
  config->m_maxSamples = 1;
  std::filesystem::create_directory((m_dir / "inner").Std());
  ASSERT_TRUE(Open(std::move(config)));
  std::filesystem::remove((m_dir / "inner").Std());
  m_recorder.Take();
  EXPECT_FALSE(Write(0));
  EXPECT_EQ(m_recorder.Take(), "Write Begin F\nFlush Begin F\nFlush Error F Couldn't save file.\n");
  std::filesystem::create_directory((m_dir / "inner").Std());
  EXPECT_TRUE(Write(1));
  EXPECT_EQ(Times("inner/0301021401.rph"), " 1") << "the failed log has used its number";
}

TEST_F(WriteLog, OpenRemovesUnfinishedImagesOfItsOwnKindOnly) {
  for (const char* name : {"1.rph.part", "1h.csv.part", "1d.csv.part", "film.part", "x.rph"})
    WriteBytes(m_dir / name, "left");
  auto buffer = Writer();
  buffer->m_bufferOnly = 1;
  Open(std::move(buffer));
  EXPECT_EQ(Files(), " 1.rph.part 1d.csv.part 1h.csv.part film.part x.rph");
  Open(Writer());
  EXPECT_EQ(Files(), " 1d.csv.part film.part x.rph");
}

}  // namespace
}  // namespace vastra
