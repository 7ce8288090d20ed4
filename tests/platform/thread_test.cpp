#include "vastra/platform/thread.h"

#include <gtest/gtest.h>

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
  int Run() override { return PostMessage(m_target, kRun, 0, 0), 0; }

  bool m_runs = false;
  HWND m_target = nullptr;
};
IMPLEMENT_DYNCREATE(CWorker, CWinThread)

UINT Next(CMessageQueue& queue, int milliseconds = -1) {
  CMessage message;
  return queue.Wait(message, milliseconds) ? message.m_message : 0;
}

TEST(Thread, RunsWhenItIsResumedUnlessInitInstanceReturnsZeroAndDeletesItself) {
  for (const bool runs : {true, false}) {
    CMessageQueue queue;
    auto* worker = static_cast<CWorker*>(AfxBeginThread(RUNTIME_CLASS(CWorker)));
    worker->m_runs = runs;
    worker->m_target = &queue;
    EXPECT_EQ(Next(queue, 50), 0u) << "it ran while it was suspended";
    worker->ResumeThread();
    if (runs) {
      EXPECT_EQ(Next(queue), kRun);
    }
    EXPECT_EQ(Next(queue), kDeleted);
  }
}

TEST(Thread, OnlyAThreadClassWithAFactoryBegins) {
  EXPECT_EQ(AfxBeginThread(RUNTIME_CLASS(CWinThread)), nullptr);
  EXPECT_EQ(AfxBeginThread(RUNTIME_CLASS(CObject)), nullptr);
}

TEST(MessageQueue, KeepsTheOrderOfEachSender) {
  constexpr LPARAM kEach = 500;
  CMessageQueue queue;
  std::vector<std::thread> senders;
  for (WPARAM sender = 0; sender < 4; ++sender)
    senders.emplace_back([&queue, sender] {
      for (LPARAM i = 0; i < kEach; ++i) PostMessage(&queue, 1, sender, i);
    });
  LPARAM next[4] = {};
  CMessage message;
  for (int i = 0; i < 4 * kEach; ++i) {
    ASSERT_EQ(queue.Wait(message, -1), 1);
    EXPECT_EQ(message.m_lparam, next[message.m_wparam]++);
  }
  for (std::thread& sender : senders) sender.join();
  EXPECT_EQ(queue.Wait(message, 0), 0);
}

TEST(CriticalSection, ExcludesOtherThreadsAndIsRecursive) {
  CCriticalSection section;
  int sum = 0;
  const auto add = [&] {
    for (int i = 0; i < 10000; ++i) {
      CSingleLock outer(&section, true), inner(&section);
      inner.Lock();
      ++sum;
    }
  };
  std::thread other(add);
  add();
  other.join();
  EXPECT_EQ(sum, 20000);
}

}  // namespace
}  // namespace vastra
