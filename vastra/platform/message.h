// Posted messages: a worker thread posts one when its work is done, and the thread of the host handles it
// later. Messages stay in the order of posting.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

#include "vastra/platform/api.h"

namespace vastra {

// Receives messages: the queue below, or a window.
class VASTRA_API CMessageTarget {
 public:
  virtual ~CMessageTarget() = default;
  // From any thread; returns at once.
  virtual void Post(UINT message, WPARAM wparam, LPARAM lparam) = 0;
};
using HWND = CMessageTarget*;

// Posts a message. It is lost if target is null.
inline void PostMessage(HWND target, UINT message, WPARAM wparam, LPARAM lparam) {
  if (target) target->Post(message, wparam, lparam);
}

struct CMessage {
  UINT m_message = 0;
  WPARAM m_wparam = 0;
  LPARAM m_lparam = 0;
};

// A target without a window. One thread waits on it. The queue must outlive all threads that post to it.
class VASTRA_API CMessageQueue : public CMessageTarget {
 public:
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;
  // Removes the oldest message and returns 1. Returns 0 if none arrives within milliseconds (below 0: waits
  // without limit).
  int Wait(CMessage& message, int milliseconds);

 private:
  std::mutex m_mutex;
  std::condition_variable m_posted;
  std::deque<CMessage> m_messages;
};

}  // namespace vastra
