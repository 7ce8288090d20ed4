#include "vastra/platform/thread.h"

#include <pthread.h>

#include <memory>
#include <new>
#include <semaphore>
#include <vector>

namespace vastra {

// A thread of the system that runs one worker after the other.
class CStandingThread {
 public:
  // For worker, which it runs when it is resumed. Null: no thread can be started.
  static CStandingThread* Take(CWinThread* worker);
  void Resume() { m_resumed.release(); }

 private:
  struct CIdle {
    CIdle() { threads.reserve(kStandingThreads); }  // a thread that ends its work allocates nothing

    std::mutex mutex;
    std::vector<CStandingThread*> threads;
  };
  // Is never destroyed, since the threads use it until the end of the process.
  static CIdle& Idle();
  static CStandingThread* TakeIdle();
  static CStandingThread* Start();
  static void* Main(void* self);
  void RunWorker();
  bool Stay();

  std::binary_semaphore m_resumed{0};
  CWinThread* m_worker = nullptr;
};

CStandingThread::CIdle& CStandingThread::Idle() {
  static CIdle& idle = *new CIdle;
  return idle;
}

CStandingThread* CStandingThread::Take(CWinThread* worker) {
  CStandingThread* thread = TakeIdle();
  if (!thread) thread = Start();
  if (thread) thread->m_worker = worker;
  return thread;
}

CStandingThread* CStandingThread::TakeIdle() {
  CIdle& idle = Idle();
  const std::lock_guard lock(idle.mutex);
  if (idle.threads.empty()) return nullptr;
  CStandingThread* thread = idle.threads.back();
  idle.threads.pop_back();
  return thread;
}

CStandingThread* CStandingThread::Start() {
  const CSignalsBlocked noSignals;
  auto thread = std::make_unique<CStandingThread>();
  pthread_t id = {};
  if (::pthread_create(&id, nullptr, &CStandingThread::Main, thread.get()) != 0) return nullptr;
  ::pthread_detach(id);
  return thread.release();
}

void* CStandingThread::Main(void* self) {
  const std::unique_ptr<CStandingThread> thread(static_cast<CStandingThread*>(self));
  do thread->RunWorker();
  while (thread->Stay());
  return nullptr;
}

void CStandingThread::RunWorker() {
  m_resumed.acquire();
  const std::unique_ptr<CWinThread> worker(m_worker);
  if (worker->InitInstance()) worker->Run();
  worker->ExitInstance();
}

// False: enough threads are kept without this one.
bool CStandingThread::Stay() {
  CIdle& idle = Idle();
  const std::lock_guard lock(idle.mutex);
  if (idle.threads.size() >= kStandingThreads) return false;
  idle.threads.push_back(this);
  return true;
}

IMPLEMENT_DYNAMIC(CWinThread, CObject)

CWinThread::CWinThread() = default;

CWinThread::~CWinThread() = default;

void CWinThread::ResumeThread() { m_thread->Resume(); }

CWinThread* AfxBeginThread(const CRuntimeClass& threadClass) try {
  std::unique_ptr<CObject> object(threadClass.CreateObject());
  auto* worker = dynamic_cast<CWinThread*>(object.get());
  if (!worker) return nullptr;
  worker->m_thread = CStandingThread::Take(worker);
  if (!worker->m_thread) return nullptr;
  return static_cast<CWinThread*>(object.release());
} catch (const std::bad_alloc&) {
  return nullptr;
}

CSignalsBlocked::CSignalsBlocked() {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
}

CSignalsBlocked::~CSignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

}  // namespace vastra
