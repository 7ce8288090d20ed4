// Locks and worker threads. A worker is created by its class, starts suspended and deletes itself. The
// threads of the system that run the workers stay for the next ones.
#pragma once

#include <signal.h>

#include <atomic>
#include <cstddef>
#include <mutex>

#include "vastra/platform/object.h"

namespace vastra {

// A recursive lock: the thread that holds it can lock it again. A copy is a separate, unlocked lock.
class VASTRA_API CCriticalSection {
 public:
  CCriticalSection() = default;
  CCriticalSection(const CCriticalSection&) {}
  CCriticalSection& operator=(const CCriticalSection&) { return *this; }
  void Lock() { m_mutex.lock(); }
  void Unlock() { m_mutex.unlock(); }

 private:
  std::recursive_mutex m_mutex;
};

// Locks a section and unlocks it at the end of the scope.
class VASTRA_API CSingleLock {
 public:
  explicit CSingleLock(CCriticalSection* section, bool lockNow = false) : m_section(section) {
    if (lockNow) Lock();
  }
  CSingleLock(const CSingleLock&) = delete;
  CSingleLock& operator=(const CSingleLock&) = delete;
  ~CSingleLock() { Unlock(); }
  void Lock() {
    m_section->Lock();
    m_locked = true;
  }
  void Unlock() {
    if (m_locked) m_section->Unlock();
    m_locked = false;
  }

 private:
  CCriticalSection* m_section;
  bool m_locked = false;
};

class CStandingThread;

// A worker with a thread. The thread calls InitInstance, then Run if that has returned non-zero, then
// ExitInstance, and deletes the object. The creator must not use the object after ResumeThread.
class VASTRA_API CWinThread : public CObject {
  DECLARE_DYNAMIC(CWinThread)
 public:
  ~CWinThread() override;
  virtual int InitInstance() { return 0; }
  virtual int Run() { return 0; }
  virtual int ExitInstance() { return 0; }
  void ResumeThread();

 protected:
  CWinThread();

 private:
  friend VASTRA_API CWinThread* AfxBeginThread(const CRuntimeClass& threadClass);
  friend class CStandingThread;

  CStandingThread* m_thread = nullptr;  // runs this worker after ResumeThread
};

// How many threads without work are kept for the next workers.
constexpr std::size_t kStandingThreads = 16;

// Creates an object of threadClass, which has a default factory, and gives it a thread, which is suspended:
// one whose worker has ended, so that a scan starts no thread of the system, or else a new one. The threads
// get no signals. Returns null if memory or a thread cannot be allocated.
VASTRA_API CWinThread* AfxBeginThread(const CRuntimeClass& threadClass);

// While it exists, the calling thread starts threads that get no signals: those of the process go to the
// threads of the host, which has the handlers.
class VASTRA_API CSignalsBlocked {
 public:
  CSignalsBlocked();
  CSignalsBlocked(const CSignalsBlocked&) = delete;
  CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;
  ~CSignalsBlocked();

 private:
  sigset_t m_before;
};

// A number that several threads read and change without a lock, with relaxed memory order. A copy has the
// present value.
template <class T>
class CRelaxed {
 public:
  CRelaxed(T value = T()) : m_value(value) {}
  CRelaxed(const CRelaxed& other) : m_value(other.Get()) {}
  CRelaxed& operator=(const CRelaxed& other) { return *this = other.Get(); }
  CRelaxed& operator=(T value) {
    m_value.store(value, std::memory_order_relaxed);
    return *this;
  }
  T Get() const { return m_value.load(std::memory_order_relaxed); }
  operator T() const { return Get(); }

 private:
  std::atomic<T> m_value;
};

}  // namespace vastra
