#include "vastra/platform/thread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <thread>

#include "vastra/platform/message.h"

namespace vastra {
namespace {

constexpr UINT kRun = 1, kDeleted = 2;

// Posts when it runs and when it is deleted.
class CWorker : public CWinThread {
  DECLARE_DYNAMIC(CWorker)
 public:
  ~CWorker() override { PostMessage(m_target, kDeleted, 0, 0); }
  int InitInstance() override { return m_runs; }
  int Run() override { return PostMessage(m_target, kRun, static_cast<WPARAM>(::gettid()), 0), 0; }

  bool m_runs = false;
  HWND m_target = nullptr;
};
IMPLEMENT_DYNCREATE(CWorker, CWinThread)

// The threads of the system that run so many workers at a time, again and again.
std::set<WPARAM> ThreadsOf(std::size_t workers, int times) {
  CMessageQueue queue;
  std::set<WPARAM> threads;
  for (int i = 0; i < times; ++i) {
    std::vector<CWorker*> all(workers);
    for (CWorker*& worker : all) {
      worker = static_cast<CWorker*>(AfxBeginThread(RUNTIME_CLASS(CWorker)));
      worker->m_runs = true;
      worker->m_target = &queue;
    }
    for (CWorker* worker : all) worker->ResumeThread();
    CMessage message;
    for (std::size_t deleted = 0; deleted < workers; deleted += message.m_message == kDeleted ? 1 : 0) {
      queue.Wait(message, -1);
      if (message.m_message == kRun) threads.insert(message.m_wparam);
    }
  }
  return threads;
}

TEST(Thread, RunsWhenItIsResumedUnlessInitInstanceReturnsZeroAndDeletesItself) {
  for (const bool runs : {true, false}) {
    CMessageQueue queue;
    CMessage message;
    auto* worker = static_cast<CWorker*>(AfxBeginThread(RUNTIME_CLASS(CWorker)));
    worker->m_runs = runs;
    worker->m_target = &queue;
    EXPECT_EQ(queue.Wait(message, 50), 0) << "it ran while it was suspended";
    worker->ResumeThread();
    std::vector<UINT> posted;
    for (; message.m_message != kDeleted; posted.push_back(message.m_message)) queue.Wait(message, -1);
    EXPECT_EQ(posted, runs ? (std::vector<UINT>{kRun, kDeleted}) : std::vector<UINT>{kDeleted});
  }
  EXPECT_EQ(AfxBeginThread(RUNTIME_CLASS(CWinThread)), nullptr) << "it has no factory";
  EXPECT_EQ(AfxBeginThread(RUNTIME_CLASS(CObject)), nullptr);
}

// A thread can still be on its way back to its place when the next worker begins.
TEST(Thread, WorkersUseThreadsAgainAndFewAreKept) {
  EXPECT_LE(ThreadsOf(1, 100).size(), 20U);
  const std::size_t many = kStandingThreads + 10;
  EXPECT_EQ(ThreadsOf(many, 1).size(), many) << "a worker waits for another one";
  constexpr auto kMost = static_cast<std::ptrdiff_t>(kStandingThreads) + 3;  // with those of the test
  const auto present = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
  };
  for (int i = 0; i < 500 && present() > kMost; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_LE(present(), kMost) << "all of them stay";
}

// The lock is recursive.
TEST(Thread, SeveralExcludeEachOtherByALockAndKeepTheirOrderInAQueue) {
  constexpr LPARAM kEach = 500;
  CMessageQueue queue;
  CCriticalSection section;
  LPARAM next[4] = {};
  int sum = 0;
  std::vector<std::thread> senders;
  for (WPARAM sender = 0; sender < 4; ++sender)
    senders.emplace_back([&, sender] {
      for (int i = 0; i < 10; ++i) {
        CSingleLock lock(&section, true);
        CSingleLock(&section).Lock();
        const int before = sum;
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        sum = before + 1;
      }
      for (LPARAM i = 0; i < kEach; ++i) PostMessage(&queue, 1, sender, i);
    });
  CMessage message;
  for (int i = 0; i < 4 * kEach; ++i) {
    ASSERT_EQ(queue.Wait(message, -1), 1);
    EXPECT_EQ(message.m_lparam, next[message.m_wparam]++);
  }
  for (std::thread& sender : senders) sender.join();
  EXPECT_EQ(queue.Wait(message, 0), 0);
  EXPECT_EQ(sum, 4 * 10) << "the lock let two in";
}

}  // namespace
}  // namespace vastra
