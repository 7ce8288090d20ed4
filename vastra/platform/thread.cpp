#include "vastra/platform/thread.h"

#include <pthread.h>

#include <new>
#include <semaphore>

namespace vastra {

struct CWinThread::CGate {
  std::binary_semaphore open{0};
};

IMPLEMENT_DYNAMIC(CWinThread, CObject)

CWinThread::CWinThread() : m_gate(std::make_unique<CGate>()) {}

CWinThread::~CWinThread() = default;

void CWinThread::ResumeThread() { m_gate->open.release(); }

void* CWinThread::Main(void* self) {
  const std::unique_ptr<CWinThread> thread(static_cast<CWinThread*>(self));
  thread->m_gate->open.acquire();
  if (thread->InitInstance()) thread->Run();
  thread->ExitInstance();
  return nullptr;
}

CWinThread* AfxBeginThread(const CRuntimeClass& threadClass) try {
  std::unique_ptr<CObject> object(threadClass.CreateObject());
  auto* thread = dynamic_cast<CWinThread*>(object.get());
  if (!thread) return nullptr;
  pthread_t id = {};
  if (::pthread_create(&id, nullptr, &CWinThread::Main, thread) != 0) return nullptr;
  ::pthread_detach(id);
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
