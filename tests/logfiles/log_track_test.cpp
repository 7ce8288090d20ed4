#include "vastra/logfiles/log_track.h"

#include <thread>

#include "tests/logfiles/link_fixture.h"
#include "tests/support/faulty_files.h"
#include "vastra/logfiles/log_keeper.h"
#include "vastra/logfiles/log_name.h"

namespace vastra {
namespace {

class LogTrack : public CLinkFixture {
 protected:
  static CLogPolicy Policy() {
    CLogPolicy policy;
    policy.sync = std::chrono::milliseconds(0);
    policy.retry = policy.journal = std::chrono::milliseconds(10);
    policy.closeWithin = std::chrono::minutes(5);  // a test that waits so long has failed
    return policy;
  }
  void OpenKept(CLogKeeper& keeper, UINT maxSamples = 1000) {
    m_link->SetLogKeeper(&keeper, false);
    EXPECT_EQ(Open(Writer(maxSamples)), 1) << keeper.GetOpenFault().Std();
  }
  // Waits until so many rows are where the ledger says.
  void WaitFor(std::uint64_t CLogLedger::*where, std::uint64_t rows) const {
    for (int i = 0; i < 3000 && m_link->GetLedger().*where != rows; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(m_link->GetLedger().*where, rows);
    CLogLedger ledger = m_link->GetLedger();
    ledger.offered = ledger.taken;  // a count of the stages
    EXPECT_TRUE(ledger.IsBalanced());
  }
  CString Journal(std::uint64_t number) const {
    const CLogNaming naming = {m_dir.Path(), "", kNamedByTime, false, ".rph", true, false};
    return m_dir / JournalFile(LogKey("output", "", naming), number);
  }
};

TEST_F(LogTrack, ALogIsSavedAlthoughItsJournalHasGoneOrCannotBeSynced) {
  enum { cannotBeSynced, gone, goneForAWhile };
  for (const int fault : {cannotBeSynced, gone, goneForAWhile}) {
    NewLink();
    CFaultyFiles files(m_dir.Path());
    CLogKeeper keeper(Policy());
    OpenKept(keeper);
    EXPECT_EQ(Write(1), 1);
    WaitFor(&CLogLedger::inJournal, 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // likely synced
    const CString away = m_dir / "away";
    if (fault == gone) DeleteFile(Journal(0));
    if (fault == goneForAWhile) std::filesystem::rename(Journal(0).Std(), away.Std());
    if (fault == cannotBeSynced)  // after the log has been synced
      files.Add({callSync, files.Count(callSync) + 2, EIO});
    EXPECT_EQ(fault == goneForAWhile ? Write(2) : 1, 1);
    if (fault == goneForAWhile) {
      for (int i = 0; i < 3000 && !FileExists(Journal(1)); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      std::filesystem::rename(away.Std(), Journal(0).Std());
    }
    EXPECT_EQ(m_link->Flush(), 1);
    WaitFor(&CLogLedger::onDisk, fault == goneForAWhile ? 2 : 1);
    EXPECT_EQ(Times("0301021400.rph"), fault == goneForAWhile ? " 1 2" : " 1");
    m_link->Close();
    EXPECT_EQ(Files().find("journal"), std::string::npos);
  }
}

TEST_F(LogTrack, ALogNamedByAVariableGoesOnOnlyWithASampleOfItsName) {
  int time = 0;
  for (const float flow : {7.0f, 7.5f, 9.0f, 7.0f}) {
    CLogKeeper keeper(Policy());
    m_link->SetLogKeeper(&keeper, false);
    auto config = Writer();
    config->m_nameVariable = "Flow";
    EXPECT_EQ(Open(std::move(config)), 1);
    for (const float value : {flow, 8.0f}) EXPECT_EQ(Write(++time, {1, value}), 1);
    m_link->Close();
  }
  EXPECT_EQ(Times("7.rph"), " 1 2 3 4");
  EXPECT_EQ(Times("9.rph"), " 5 6");
  EXPECT_EQ(Times("7~2.rph"), " 7 8");
}

TEST_F(LogTrack, ALogLargerThanTheLimitIsGivenTheTimeToBeSaved) {
  CLogPolicy policy = Policy();
  policy.hold = 1;
  CLogKeeper keeper(policy);
  OpenKept(keeper, 1);
  CLogSample sample = Sample(kStart, {});
  sample.m_values.SetSize(500'000);
  EXPECT_EQ(m_link->Write(sample), 1);
  WaitFor(&CLogLedger::onDisk, 1);
  m_link->Close();
}

TEST_F(LogTrack, JournalsOfOtherOutputsAreRecoveredUnlessTheirProcessLives) {
  CJournalHead head;
  head.naming = {m_dir.Path(), "x", kNamedByTime, false, ".rph", true, false};
  head.varNames = Names({"Temp", "Flow"});
  CSampleStore samples;
  samples.Append(Sample(kStart, {1, 2}));
  CSampleSpans spans;
  CSampleStore::CPlace from = samples.GetHeadPlace();
  samples.AddSpans(from, spans);
  auto journal = std::make_unique<CJournalWriter>(m_dir / JournalFile("0123456789abcdef", 0), head);
  journal->Append(spans);
  CLogKeeper keeper(Policy());
  OpenKept(keeper);
  for (const bool lives : {true, false}) {
    if (!lives) journal.reset();
    EXPECT_EQ(keeper.RecoverOthers(nullptr).size(), lives ? 0u : 1u);
    EXPECT_EQ(keeper.Others().size(), lives ? 0u : 1u);
  }
  EXPECT_NE(ReadBytes(m_dir / "x0301021400.rph"), "");
  m_link->Close();
}

// Logs that wait for one that cannot be saved do not delay the start one by one.
TEST_F(LogTrack, AFullDiskDoesNotStopTheStart) {
  CFaultyFiles files(m_dir.Path());
  files.Add({callRename, 1, EIO, true});
  {
    CLogKeeper keeper(Policy());
    OpenKept(keeper, 2);
    for (const int time : {1, 2, 3, 4, 5}) {
      EXPECT_EQ(Write(time), 1);
      WaitFor(&CLogLedger::inJournal, static_cast<std::uint64_t>(time));
    }
    m_link->Close();
  }
  CLogPolicy policy = Policy();
  policy.retry = std::chrono::hours(1);
  CLogKeeper keeper(policy);
  OpenKept(keeper, 2);
  EXPECT_EQ(m_link->GetLedger().inJournal, 5u);
  files.RemoveFaults();
  m_link->Close();  // tries again
  EXPECT_EQ(m_link->GetLedger().onDisk, 5u);
  EXPECT_EQ(Times("0301021400.rph") + Times("0301021401.rph") + Times("0301021402.rph"), " 1 2 3 4 5");
}

}  // namespace
}  // namespace vastra
