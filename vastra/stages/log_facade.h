// CLogFacade: the base of all stages. The host drives a stage: the stage builds its chains of links in Open,
// deletes them in Close and passes samples to them in between. A stage sends no messages itself: a link that
// fails has sent one already, and the stage returns 0.
//
// Threads: one thread at a time calls the members of a stage, and they take no lock. It is the host's thread,
// or one on which the host opens and closes the stages while it does not use them itself. Only a worker (see
// stage_thread.h) locks its stage and then its sample; the host keeps both alive, and the stage open, until
// the message of the worker has arrived.
#pragma once

#include "vastra/core/sample.h"
#include "vastra/platform/message.h"

namespace vastra {

class VASTRA_API CLogFacade : public CObject {
 public:
  // threaded non-zero: Read of CLogInput and Write of CPlcMultiOutput only start a worker, which posts
  // message to wnd with the result (1 or 0) as WPARAM. The other stages store the values and do not use them.
  // Returns 1.
  virtual int SetCallBack(int threaded, HWND wnd, UINT message);

 protected:
  CLogFacade() = default;

  CCriticalSection m_stageLock;
  int m_open = 0;
  int m_threaded = 0;
  UINT m_notifyMessage = 0;
  HWND m_notifyWnd = nullptr;
};

}  // namespace vastra
