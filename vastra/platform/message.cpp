#include "vastra/platform/message.h"

#include <chrono>

namespace vastra {

void CMessageQueue::Post(UINT message, WPARAM wparam, LPARAM lparam) {
  const std::lock_guard lock(m_mutex);
  m_messages.push_back({message, wparam, lparam});
  m_posted.notify_one();  // under the lock, because the waiter may destroy the queue once it has the message
}

int CMessageQueue::Wait(CMessage& message, int milliseconds) {
  std::unique_lock lock(m_mutex);
  const auto any = [this] { return !m_messages.empty(); };
  if (milliseconds < 0)
    m_posted.wait(lock, any);
  else if (!m_posted.wait_for(lock, std::chrono::milliseconds(milliseconds), any))
    return 0;
  message = m_messages.front();
  m_messages.pop_front();
  return 1;
}

}  // namespace vastra
