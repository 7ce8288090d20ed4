// Posted messages: how a worker tells the thread of its host that it has done its work. A target takes a
// message at once, and its owner finds it later, in the order of posting.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

#include "vastra/platform/api.h"

namespace vastra {

// What messages can be posted to: the queue below, or a window.
class VASTRA_API CMessageTarget {
 public:
  virtual ~CMessageTarget() = default;
  // From any thread; returns at once.
  virtual void Post(UINT message, WPARAM wparam, LPARAM lparam) = 0;
};
using HWND = CMessageTarget*;

// Posts a message. A null target drops it.
inline void PostMessage(HWND target, UINT message, WPARAM wparam, LPARAM lparam) {
  if (target) target->Post(message, wparam, lparam);
}

struct CMessage {
  UINT m_message = 0;
  WPARAM m_wparam = 0;
  LPARAM m_lparam = 0;
};

// A target without a window. One thread waits on it. The queue outlives whoever posts.
class VASTRA_API CMessageQueue : public CMessageTarget {
 public:
  void Post(UINT message, WPARAM wparam, LPARAM lparam) override;
  // Takes the oldest message: 1, or 0 if none has come within milliseconds (below 0: without a limit).
  int Wait(CMessage& message, int milliseconds);

 private:
  std::mutex m_mutex;
  std::condition_variable m_posted;
  std::deque<CMessage> m_messages;
};

}  // namespace vastra
