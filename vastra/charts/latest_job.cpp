#include "vastra/charts/latest_job.h"

#include <utility>

namespace vastra {

CLatestJob::~CLatestJob() {
  {
    const std::lock_guard lock(m_mutex);
    ++m_number;
    m_isEnding = true;
  }
  m_wake.notify_one();
  if (m_thread.joinable()) m_thread.join();
}

void CLatestJob::Start(CJob job, bool endsFormer) {
  const std::lock_guard lock(m_mutex);
  if (endsFormer) ++m_number;
  m_next = std::move(job);
  if (!m_thread.joinable()) m_thread = std::thread([this] { Run(); });
  m_wake.notify_one();
}

void CLatestJob::Stop() {
  const std::lock_guard lock(m_mutex);
  ++m_number;
  m_next = {};
}

void CLatestJob::Run() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    m_wake.wait(lock, [this] { return m_isEnding || m_next; });
    if (m_isEnding) return;
    const CJob job = std::exchange(m_next, {});
    const std::uint64_t number = m_number;
    lock.unlock();
    job([this, number] { return m_number != number; });
    lock.lock();
  }
}

}  // namespace vastra
