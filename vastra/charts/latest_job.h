// CLatestJob: a thread for jobs of which only the latest counts: a new one replaces the one that waits.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace vastra {

class CLatestJob {
 public:
  // Asks the job whether it has to end.
  using CIsStopped = std::function<bool()>;
  using CJob = std::function<void(const CIsStopped&)>;

  CLatestJob() = default;
  CLatestJob(const CLatestJob&) = delete;
  CLatestJob& operator=(const CLatestJob&) = delete;
  ~CLatestJob();  // ends the job and waits for that

  // Starts the thread with the first job. Without endsFormer, the job that runs is not told to end.
  void Start(CJob job, bool endsFormer = true);
  // Ends the job that runs or waits, and does not wait for that.
  void Stop();

 private:
  void Run();

  std::mutex m_mutex;
  std::condition_variable m_wake;
  CJob m_next;
  std::atomic<std::uint64_t> m_number = 0;  // counts what ends a job: Start and Stop
  bool m_isEnding = false;
  std::thread m_thread;
};

}  // namespace vastra
