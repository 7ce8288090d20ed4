#include "host/web/web_workers.h"

namespace vastra {

CWebWorkers::CWebWorkers(std::size_t threads) {
  m_threads.reserve(threads);
  for (std::size_t i = 0; i < threads; ++i) m_threads.emplace_back([this] { Run(); });
}

bool CWebWorkers::Start(CWork work, std::size_t most) {
  const std::lock_guard lock(m_mutex);
  if (m_isStopping || m_works.size() >= most) return false;
  m_works.push_back(std::move(work));
  m_wake.notify_one();
  return true;
}

void CWebWorkers::Stop() {
  {
    const std::lock_guard lock(m_mutex);
    m_isStopping = true;
    m_works.clear();
  }
  m_wake.notify_all();
  for (std::thread& thread : m_threads) thread.join();
  m_threads.clear();
}

void CWebWorkers::Run() {
  for (;;) {
    CWork work;
    {
      std::unique_lock lock(m_mutex);
      m_wake.wait(lock, [this] { return m_isStopping || !m_works.empty(); });
      if (m_isStopping) return;
      work = std::move(m_works.front());
      m_works.pop_front();
    }
    work();
  }
}

}  // namespace vastra
