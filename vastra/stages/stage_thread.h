// The workers: a thread that does one operation of a stage on one sample, posts the result and ends. It locks
// the stage, then the sample; both are unlocked again when the message is posted.
#pragma once

#include "vastra/core/sample.h"
#include "vastra/platform/message.h"
#include "vastra/platform/thread.h"

namespace vastra {

// Stage has `int Work(CLogSample&)`, the operation on the worker, and makes this class a friend.
template <class Stage>
class CStageThread : public CWinThread {
 public:
  int InitInstance() override { return 1; }

  int Run() override {
    int result = 0;
    if (m_pStage && m_pSample) {
      CSingleLock stageLock(&m_pStage->m_stageLock, true);
      CSingleLock sampleLock(&m_pSample->m_lock, true);
      result = m_pStage->Work(*m_pSample);
    }
    PostMessage(m_notifyWnd, m_notifyMessage, static_cast<WPARAM>(result), 0);
    return 0;
  }

  HWND m_notifyWnd = nullptr;
  CLogSample* m_pSample = nullptr;  // the host's
  Stage* m_pStage = nullptr;        // the host's
  UINT m_notifyMessage = 0;

 protected:
  // Starts a worker for sample: 1, or 0 if no thread could be started. The result of the operation comes with
  // the message.
  static int Start(const CRuntimeClass& threadClass, Stage* stage, CLogSample& sample, HWND wnd,
                   UINT message) {
    auto* thread = static_cast<CStageThread*>(AfxBeginThread(threadClass));
    if (!thread) return 0;
    thread->m_pStage = stage;
    thread->m_pSample = &sample;
    thread->m_notifyWnd = wnd;
    thread->m_notifyMessage = message;
    thread->ResumeThread();
    return 1;
  }
};

}  // namespace vastra
