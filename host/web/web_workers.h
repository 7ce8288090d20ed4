// CWebWorkers: some threads for what may wait for the disk, so that the thread of the connections never does.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vastra {

class CWebWorkers {
 public:
  using CWork = std::function<void()>;

  explicit CWebWorkers(std::size_t threads);
  CWebWorkers(const CWebWorkers&) = delete;
  CWebWorkers& operator=(const CWebWorkers&) = delete;
  ~CWebWorkers() { Stop(); }

  // False, and nothing is done, if already most pieces of work wait.
  bool Start(CWork work, std::size_t most);
  // Ends the threads after what they do; work that waits is dropped.
  void Stop();

 private:
  void Run();

  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<CWork> m_works;
  bool m_isStopping = false;
  std::vector<std::thread> m_threads;
};

}  // namespace vastra
