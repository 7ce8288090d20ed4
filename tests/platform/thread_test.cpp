#include "vastra/platform/thread.h"

#include <gtest/gtest.h>

#include <thread>

#include "vastra/platform/message.h"

namespace vastra {
namespace {

constexpr UINT kDone = 1, kGone = 2;

// Says what it did, and that it went.
class CWorker : public CWinThread {
  DECLARE_DYNAMIC(CWorker)
 public:
  ~CWorker() override { PostMessage(m_target, kGone, 0, 0); }
  int InitInstance() override { return m_number >= 0; }
  int Run() override { return PostMessage(m_target, kDone, static_cast<WPARAM>(m_number), 0), 0; }

  int m_number = -1;  // below 0: there is nothing to run
  HWND m_target = nullptr;
};
IMPLEMENT_DYNCREATE(CWorker, CWinThread)

CWorker* Begin(CMessageQueue& queue, int number) {
  auto* worker = static_cast<CWorker*>(AfxBeginThread(RUNTIME_CLASS(CWorker)));
  worker->m_number = number;
  worker->m_target = &queue;
  return worker;
}

TEST(Thread, RunsWhenItIsResumedAndDeletesItself) {
  CMessageQueue queue;
  CMessage message;
  CWorker* worker = Begin(queue, 7);
  EXPECT_EQ(0, queue.Wait(message, 50)) << "it ran while it was suspended";
  worker->ResumeThread();
  ASSERT_EQ(1, queue.Wait(message, -1));
  EXPECT_EQ(kDone, message.m_message);
  EXPECT_EQ(7u, message.m_wparam);
  ASSERT_EQ(1, queue.Wait(message, -1));
  EXPECT_EQ(kGone, message.m_message);
}

TEST(Thread, AnInitThatGivesZeroSkipsTheRun) {
  CMessageQueue queue;
  CMessage message;
  Begin(queue, -1)->ResumeThread();
  ASSERT_EQ(1, queue.Wait(message, -1));
  EXPECT_EQ(kGone, message.m_message);
}

TEST(Thread, OnlyAClassOfThreadsWithAFactoryBegins) {
  EXPECT_EQ(nullptr, AfxBeginThread(RUNTIME_CLASS(CWinThread)));
  EXPECT_EQ(nullptr, AfxBeginThread(RUNTIME_CLASS(CObject)));
}

TEST(MessageQueue, KeepsTheOrderOfEachSender) {
  constexpr int kSenders = 4;
  constexpr LPARAM kEach = 500;
  CMessageQueue queue;
  std::vector<std::thread> senders;
  for (WPARAM sender = 0; sender < kSenders; ++sender)
    senders.emplace_back([&queue, sender] {
      for (LPARAM i = 0; i < kEach; ++i) PostMessage(&queue, 1, sender, i);
    });
  LPARAM next[kSenders] = {};
  CMessage message;
  for (int i = 0; i < kSenders * kEach; ++i) {
    ASSERT_EQ(1, queue.Wait(message, -1));
    EXPECT_EQ(next[message.m_wparam]++, message.m_lparam);
  }
  for (std::thread& sender : senders) sender.join();
  EXPECT_EQ(0, queue.Wait(message, 0));
}

TEST(CriticalSection, LetsOneThreadInAndThatOneAgain) {
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
  EXPECT_EQ(20000, sum);
}

}  // namespace
}  // namespace vastra
