// The file link as a writer: what gets onto the disk when, and what is lost when it cannot.
#include "tests/logfiles/example.h"
#include "tests/logfiles/link_fixture.h"

namespace vastra {
namespace {

class WriteLog : public CLinkFixture {
 protected:
  // Opens a writer of both forms and gathers the two samples of the worked example.
  void GatherExample(UINT maxSamples = 1000) {
    auto config = Writer();
    config->m_saveCsv = 1;
    config->m_maxSamples = maxSamples;
    ASSERT_TRUE(Open(std::move(config)));
    WriteExample();
  }
  void WriteExample() {
    CLogSample first = Sample(1000000000, {1.5f, -2.0f}), second = Sample(1000000060, {2.25f, 0.0f});
    first.m_time.millitm = 250;
    first.m_time.timezone = second.m_time.timezone = -60;
    m_link->Write(first);
    m_link->Write(second);
  }
};

TEST_F(WriteLog, TheBytesOfBothFormsAreThoseOfTheFormatsPage) {
  GatherExample();
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ(ExampleLog(), Bytes("0109090100.rph"));
  EXPECT_EQ(ExampleCsv(), Bytes("0109090100h.csv"));
  EXPECT_EQ(" 0109090100.rph 0109090100h.csv", Files());
}

TEST_F(WriteLog, ALogIsWrittenWhenItIsFullAndTheNextSampleWaits) {
  auto config = Writer();
  config->m_maxSamples = 3;
  Open(std::move(config));
  m_recorder.Take();
  for (int i = 0; i < 2; ++i) Write(kStart + i);
  EXPECT_EQ("", Files());
  m_recorder.Take();
  Write(kStart + 2);
  EXPECT_EQ("Write Begin F\nFlush Begin F\nFlush End F\nWrite End F\n", m_recorder.Take());
  Write(kStart + 3600);
  EXPECT_EQ(" 0301021400.rph", Files());
  EXPECT_EQ(Raw(kStart) + Raw(kStart + 2), Bytes("0301021400.rph").substr(8, 8));
}

TEST_F(WriteLog, AClosedLinkDropsWhatWasNotFlushed) {
  GatherExample();
  m_link->Close();
  EXPECT_EQ("", Files());
  GatherExample();
  m_link->Flush();
  EXPECT_EQ(ExampleLog(), Bytes("0109090100.rph"));
  EXPECT_FALSE(m_link->Flush());
  EXPECT_EQ("Flush Warning F Tried to flush an empty log.\n", m_recorder.TakeFaults());
}

TEST_F(WriteLog, ASampleKeepsItsLengthInBothForms) {
  auto config = Writer();
  config->m_saveCsv = 1;
  config->m_varNames = Names({"a,b"});
  Open(std::move(config));
  Write(kStart, {});
  Write(kStart + 1, {1, 2, 3});
  m_link->Flush();
  EXPECT_EQ(
      "TimeStamp,a,b,\nThu Jan 02 14:00:00:0  2003,\nThu Jan 02 14:00:01:0  "
      "2003,1.000000,2.000000,3.000000,\n",
      Bytes("0301021400h.csv"));
}

// On a full disk a log that is new stays as far as it got, and its samples are gone.
TEST_F(WriteLog, SaysSoWhenTheDiskIsFullAtAnyByte) {
  const std::string log = ExampleLog(), csv = ExampleCsv();
  for (std::size_t size = 0; size < csv.size(); ++size) {
    GatherExample();
    const bool whole = size >= log.size();
    {
      const CFileSizeLimit full(size);
      m_recorder.Take();
      EXPECT_FALSE(m_link->Flush());
    }
    EXPECT_EQ(whole ? "Flush Error F Couldn't save CSV file.\n" : "Flush Error F Couldn't save file.\n",
              m_recorder.TakeFaults());
    const CString name = ListFiles(m_dir.Path(), ".rph")[0].m_name.Left(10);
    EXPECT_EQ(log.substr(0, size), ReadBytes(m_dir / (name + ".rph")));
    EXPECT_EQ(whole ? csv.substr(0, size) : "", ReadBytes(m_dir / (name + "h.csv")));
    EXPECT_FALSE(m_link->Flush());
    m_link->Close();
    for (const CFileEntry& file : ListFiles(m_dir.Path(), "")) DeleteFile(m_dir / file.m_name);
  }
}

// A log that takes the place of another leaves it whole until it is whole itself.
TEST_F(WriteLog, AFullDiskLeavesTheOldLogOfThatName) {
  const std::string log = ExampleLog(), csv = ExampleCsv();
  WriteBytes(m_dir / "0109090100.rph", "old");
  WriteBytes(m_dir / "0109090100h.csv", "old");
  for (std::size_t size = 0; size < csv.size(); ++size) {
    NewLink();  // a new link begins at 00
    GatherExample();
    {
      const CFileSizeLimit full(size);
      EXPECT_FALSE(m_link->Flush());
    }
    EXPECT_EQ(size < log.size() ? "old" : log, Bytes("0109090100.rph"));
    EXPECT_EQ("old", Bytes("0109090100h.csv"));
    EXPECT_EQ(" 0109090100.rph 0109090100h.csv", Files());
  }
  NewLink();
  GatherExample(2);
  EXPECT_EQ(csv, Bytes("0109090100h.csv"));
}

TEST_F(WriteLog, AVanishedDirectoryFailsTheSaveAndTheLogGoesOn) {
  const CString inner = m_dir / "inner";
  std::filesystem::create_directory(inner.Std());
  const auto present = std::filesystem::current_path();
  auto config = Writer();
  config->m_directory = inner;
  config->m_maxSamples = 1;
  ASSERT_TRUE(Open(std::move(config)));
  std::filesystem::remove(inner.Std());
  m_recorder.Take();
  EXPECT_FALSE(Write(kStart));
  EXPECT_EQ("Write Begin F\nFlush Begin F\nFlush Error F Couldn't save file.\n", m_recorder.Take());
  std::filesystem::create_directory(inner.Std());
  EXPECT_TRUE(Write(kStart + 1));
  EXPECT_TRUE(FileExists(inner + "/0301021401.rph"));  // the failed one has used up its number
  EXPECT_EQ(present, std::filesystem::current_path());
}

TEST_F(WriteLog, ImagesThatAKillLeftGoWithTheNextOpenAndNoOtherFilesDo) {
  for (const char* name :
       {"0109090100.rph.part", "0109090100h.csv.part", "0109090100d.csv.part", "film.part", "x.rph"})
    WriteBytes(m_dir / name, "left");
  auto buffer = Writer();
  buffer->m_bufferOnly = 1;
  Open(std::move(buffer));
  EXPECT_EQ(" 0109090100.rph.part 0109090100d.csv.part 0109090100h.csv.part film.part x.rph", Files());
  Open(Writer());
  EXPECT_EQ(" 0109090100d.csv.part film.part x.rph", Files());
}

TEST_F(WriteLog, WithoutADirectoryItDoesNotOpen) {
  auto config = Writer();
  config->m_directory = "";
  EXPECT_FALSE(Open(std::move(config)));
}

}  // namespace
}  // namespace vastra
