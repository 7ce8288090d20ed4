// Logs that are on the disk while they grow: PartialFlush.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>

#include "tests/logfiles/link_fixture.h"
#include "vastra/logfiles/log_reader.h"

namespace vastra {
namespace {

class SummaryLog : public CLinkFixture {
 protected:
  std::unique_ptr<CFileConfig> Summary(UINT maxSamples = 1000) const {
    auto config = Writer();
    config->m_extension = ".rpd";
    config->m_saveCsv = 1;
    config->m_maxSamples = maxSamples;
    return config;
  }

  // Rows of the log; -1 if it is damaged or not there.
  static int Rows(const CString& path) {
    CSampleStore samples;
    CLogReader log(samples);
    return log.Open(path) && log.ReadSamples() ? static_cast<int>(samples.GetCount()) : -1;
  }
  int Rows() const { return Rows(m_dir / "0301021400.rpd"); }
};

TEST_F(SummaryLog, AGrownLogHasTheBytesOfOneWrittenAtOnce) {
  Open(Summary());
  for (int i = 0; i < 50; ++i) {
    Write(kStart + i, {static_cast<float>(i), -0.5f});
    EXPECT_TRUE(m_link->PartialFlush());
    EXPECT_EQ(i + 1, Rows());
  }
  const std::string rp = Bytes("0301021400.rpd"), csv = Bytes("0301021400d.csv");
  EXPECT_EQ(" 0301021400.rpd 0301021400d.csv", Files());
  m_link->Close();
  NewLink();
  Open(Summary());
  for (int i = 0; i < 50; ++i) Write(kStart + i, {static_cast<float>(i), -0.5f});
  m_link->Flush();
  EXPECT_EQ(rp, Bytes("0301021400.rpd"));
  EXPECT_EQ(csv, Bytes("0301021400d.csv"));
}

TEST_F(SummaryLog, TheClosingFlushWritesWhatCameSinceAndTheNextLogIsAnother) {
  Open(Summary());
  Write(kStart);
  m_link->PartialFlush();
  Write(kStart + 1);
  m_recorder.Take();
  EXPECT_TRUE(m_link->Flush());
  EXPECT_EQ("Flush Begin F\nPartialFlush Begin F\nPartialFlush End F\nFlush End F\n", m_recorder.Take());
  EXPECT_EQ(2, Rows());
  Write(kStart + 2);
  m_link->PartialFlush();
  EXPECT_EQ(1, Rows(m_dir / "0301021401.rpd"));
  EXPECT_EQ(std::string("TimeStamp,Temp,Flow,\nThu Jan 02 14:00:02:0  2003,1.000000,2.000000,\n"),
            Bytes("0301021401d.csv"));
}

TEST_F(SummaryLog, BehindACompleteLogThereIsNothingToWrite) {
  Open(Summary(2));
  Write(kStart);
  m_link->PartialFlush();
  Write(kStart + 1);
  m_recorder.Take();
  EXPECT_TRUE(m_link->PartialFlush());
  EXPECT_EQ("PartialFlush Begin F\nPartialFlush Notice F No samples to write (Probably new file).\n",
            m_recorder.Take());
  EXPECT_EQ(2, Rows());
}

TEST_F(SummaryLog, RowsThatCouldNotBeSavedGoOutWithTheNextUnderTheNameOfTheFirst) {
  Open(Summary());
  Write(kStart);
  {
    const CFileSizeLimit full(50);
    m_recorder.Take();
    EXPECT_FALSE(m_link->PartialFlush());
    EXPECT_EQ("PartialFlush Error F Couldn't save file.\n", m_recorder.TakeFaults());
    Write(kStart + 3600);
    EXPECT_FALSE(m_link->PartialFlush());
    EXPECT_EQ("PartialFlush Error F Couldn't save file.\n", m_recorder.TakeFaults());
  }
  Write(kStart + 3601);
  EXPECT_TRUE(m_link->PartialFlush());
  EXPECT_EQ(3, Rows());
  EXPECT_EQ(" 0301021400.rpd 0301021400d.csv", Files());
}

TEST_F(SummaryLog, AFullDiskLeavesTheRowsThatWereConfirmed) {
  Open(Summary());
  Write(kStart);
  m_link->PartialFlush();
  const std::string before = Bytes("0301021400.rpd");
  Write(kStart + 1);
  for (std::size_t size = 0; size < before.size() + 22; ++size) {
    const CFileSizeLimit full(size);
    EXPECT_FALSE(m_link->PartialFlush());
    EXPECT_EQ(before, Bytes("0301021400.rpd"));
    EXPECT_EQ(" 0301021400.rpd 0301021400d.csv", Files());
  }
  EXPECT_TRUE(m_link->PartialFlush());
  EXPECT_EQ(2, Rows());
}

TEST_F(SummaryLog, ATextCopyThatCannotBeSavedIsNoFailure) {
  Open(Summary());
  std::filesystem::create_directory((m_dir / "0301021400d.csv").Std());
  Write(kStart);
  m_recorder.Take();
  EXPECT_TRUE(m_link->PartialFlush());
  EXPECT_EQ("PartialFlush Begin F\nPartialFlush Error F Couldn't save CSV file.\nPartialFlush End F\n",
            m_recorder.Take());
  std::filesystem::remove((m_dir / "0301021400d.csv").Std());
  Write(kStart + 1);
  m_link->PartialFlush();
  EXPECT_EQ(std::string("TimeStamp,Temp,Flow,\nThu Jan 02 14:00:00:0  2003,1.000000,2.000000,\n"
                        "Thu Jan 02 14:00:01:0  2003,1.000000,2.000000,\n"),
            Bytes("0301021400d.csv"));
}

TEST_F(SummaryLog, TheClosingFlushHidesTheFailureOfItsLastWrite) {
  Open(Summary());
  Write(kStart);
  m_link->PartialFlush();
  Write(kStart + 1);
  m_recorder.Take();
  {
    const CFileSizeLimit full(10);
    EXPECT_TRUE(m_link->Flush());
  }
  EXPECT_EQ("PartialFlush Error F Couldn't save file.\n", m_recorder.TakeFaults());
  EXPECT_EQ(1, Rows());
  EXPECT_FALSE(m_link->Flush());  // the row is lost
  EXPECT_EQ("Flush Warning F Tried to flush an empty log.\n", m_recorder.TakeFaults());
}

TEST_F(SummaryLog, AGrowingLogCountsOnceInTheRotation) {
  auto config = Summary(3);
  config->m_maxLogs = 2;
  Open(std::move(config));
  for (int i = 0; i < 9; ++i) Write(kStart + i), m_link->PartialFlush();
  EXPECT_EQ(" 0301021401.rpd 0301021401d.csv 0301021402.rpd 0301021402d.csv", Files());
}

// Writes rows until it is killed, and tells confirmed of each one that Flush has confirmed.
[[noreturn]] void GrowForEver(CFileLink& link, int confirmed) {
  for (int i = 0;; ++i) {
    CLogSample row = Sample(kStart + i, {1, 2});
    if (!link.Write(row) || !link.PartialFlush() || ::write(confirmed, "", 1) != 1) ::_exit(1);
  }
}

TEST_F(SummaryLog, AKillLeavesTheConfirmedRowsOrOneMore) {
  std::mt19937 random(5);
  for (int round = 0; round < 20; ++round) {
    Open(Summary());
    int ends[2];
    ASSERT_EQ(0, ::pipe(ends));
    const pid_t child = ::fork();
    if (child == 0) GrowForEver(*m_link, ends[1]);
    ::close(ends[1]);
    char byte;
    ASSERT_EQ(1, ::read(ends[0], &byte, 1));
    ::usleep(static_cast<useconds_t>(random() % 20'000));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    int confirmed = 1;
    while (::read(ends[0], &byte, 1) == 1) ++confirmed;
    ::close(ends[0]);
    const int rows = Rows();
    EXPECT_TRUE(rows == confirmed || rows == confirmed + 1) << rows << " of " << confirmed;
  }
  Open(Summary());
  EXPECT_EQ(" 0301021400.rpd 0301021400d.csv", Files());
}

}  // namespace
}  // namespace vastra
