#include "vastra/logfiles/log_lock.h"

#include <sys/wait.h>
#include <unistd.h>

#include "tests/logfiles/link_fixture.h"
#include "tests/support/faulty_files.h"
#include "vastra/logfiles/log_name.h"

namespace vastra {
namespace {

class LogLock : public CLogFixture {
 protected:
  // Returns -1, or the id of the process that has the lock.
  int Take(CLogLock& lock, const char* key, const char* prefix, const char* variable) const {
    int other = 0;
    return lock.Take(key, {m_dir.Path(), prefix, variable, false, ".rph", true, false}, other) ? -1 : other;
  }
  int TakeA(CLogLock& lock) const { return Take(lock, "a", "", kNamedByTime); }
  std::string Unfinished() const {
    CLogLock lock;
    const auto log = TakeA(lock) < 0 ? lock.GetUnfinished() : std::nullopt;
    return log ? log->name.Std() + " " + std::to_string(log->first.time + log->samples) : "-";
  }
  const CString m_file = m_dir / ".vastra-a.lock";
};

TEST_F(LogLock, OneWriterOfANameAtATimeInAllProcesses) {
  CLogLock lock, second;
  const int child = ::fork(), self = ::getpid();
  if (child == 0) ::raise(TakeA(lock) < 0 ? SIGSTOP : SIGKILL);
  ::waitpid(child, nullptr, WUNTRACED);
  EXPECT_EQ(TakeA(lock), child);
  EXPECT_EQ(Take(lock, "b", "12", "Items"), child);  // whose logs can have the same names
  EXPECT_EQ(Take(second, "c", "x", kNamedByTime), -1);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(Take(lock, "b", "12", "Items"), -1);
  EXPECT_EQ(TakeA(second), self);
  lock.Release();
  for (const bool wasCutOff : {true, false}) {  // the child was killed
    EXPECT_EQ(TakeA(second), -1);
    EXPECT_EQ(second.WasCutOff(), wasCutOff);
  }
  EXPECT_EQ(Files(), " .vastra-a.lock .vastra-b.lock .vastra-c.lock");
}

TEST_F(LogLock, AHeldLockStopsAllButItsHolder) {
  std::list<CLogLock> held;
  CLogLock lock, second;
  int other = 0;
  TakeA(lock);
  held.emplace_back().TakeOver(lock);
  EXPECT_FALSE(lock.IsTaken());
  EXPECT_EQ(TakeA(lock), ::getpid());
  EXPECT_EQ(Take(second, "b", "12", "Items"), ::getpid());
  EXPECT_EQ(second.Take("b", {m_dir.Path(), "12", "Items", false, ".rph", true, false}, other, held), 1);
  lock.TakeOver(held.front());
  EXPECT_TRUE(lock.IsTaken() && !lock.WasCutOff());
}

TEST_F(LogLock, RemembersTheUnfinishedLogUnlessItsRecordIsTorn) {
  CLogLock lock;
  TakeA(lock);
  lock.SetUnfinished({{"0301021400", {kStart}, 7}});
  lock.Release();
  const std::string whole = ReadBytes(m_file);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Unfinished(), "0301021400 1041516007");
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    WriteBytes(m_file, whole.substr(0, cut));
    CLogLock torn;
    TakeA(torn);
    EXPECT_FALSE(torn.GetUnfinished()) << cut;
    EXPECT_EQ(torn.WasCutOff(), cut > 0);
  }
  WriteBytes(m_file, whole);
  TakeA(lock);
  lock.SetUnfinished(std::nullopt);
  lock.Release();
  EXPECT_EQ(Unfinished(), "-");
}

TEST_F(LogLock, IsTakenAgainWhenItsFileHasGoneUnlessSomebodyElseWasFaster) {
  CLogLock lock, second;
  int other = 0;
  TakeA(lock);
  DeleteFile(m_file);
  EXPECT_EQ(TakeA(second), -1);
  EXPECT_EQ(lock.Renew(other), 0);
  EXPECT_EQ(other, ::getpid());
  second.Release();
  DeleteFile(m_file);
  EXPECT_EQ(lock.Renew(other), 1);
  EXPECT_EQ(TakeA(second), ::getpid());
}

TEST_F(LogLock, HoldsOnAFullDiskAndWithoutLocksOfTheFileSystem) {
  CFaultyFiles files(m_dir.Path());
  files.Add({callWrite, 1, ENOSPC, true});
  CLogLock lock, second;
  EXPECT_EQ(TakeA(lock), -1);
  EXPECT_EQ(TakeA(second), 0);  // a process that is not known
  EXPECT_THROW(lock.SetUnfinished(std::nullopt), CFileException);
  files.Add({callLock, 1, ENOLCK, true});
  EXPECT_EQ(TakeA(second), -1);
}

}  // namespace
}  // namespace vastra
