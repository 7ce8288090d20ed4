// CNodePool: the threads and the queue of CNodeWorkers, which is the only user. Everything is guarded by one
// mutex, and functions with "Locked" in their comment need it.
#pragma once

#include <condition_variable>
#include <mutex>
#include <vector>

#include "vastra/plc/node_workers.h"

namespace vastra {

class CNodePool : public std::enable_shared_from_this<CNodePool> {
 public:
  using Time = CNodeTask::Time;
  using EState = CNodeTask::EState;

  void Start(const std::shared_ptr<CNodeTask>& task, bool isAway);
  // Locked: makes those overdue that nobody waits for, and starts a thread if one is missing.
  void Look(CNodeWorkers::Span patience);
  // Locked: stops waiting for a task that has not ended.
  void GiveUp(CNodeTask& task, CNodeWorkers::EWait wait);
  // Locked: removes a task from the queue.
  void Withdraw(CNodeTask& task);
  // Locked: when the wait for a task ends that began at begin.
  Time Limit(const CNodeTask& task, Time begin, CNodeWorkers::Span patience) const;
  // Leaves what runs and what waits, closes that could not begin, to the threads. Waits for the free ones.
  void Quit();
  static int Overdue();

  std::mutex m_mutex;
  std::condition_variable m_ended;  // the last awaited task has ended
  int m_awaited = 0;
  Time m_stopped{};  // when a wait has first seen that the host stops

 private:
  void Main();
  std::shared_ptr<CNodeTask> TakeNext();
  bool CanBegin(const CNodeTask& task) const;
  bool HasLine(const CNodeTask& task, bool onlyOverdue) const;
  std::size_t Usable() const { return m_threads - m_busy + static_cast<std::size_t>(m_used[0] + m_used[1]); }
  void MakeThread();
  void MakeOverdue(CNodeTask& task);
  bool End(CNodeTask& task);
  void StopAwaiting(CNodeTask& task);

  std::condition_variable m_work, m_left;
  std::vector<std::shared_ptr<CNodeTask>> m_queue;  // in the order of Start
  std::vector<std::shared_ptr<CNodeTask>> m_running;
  int m_used[2] = {0, 0};  // places, by m_isAway
  std::size_t m_threads = 0, m_free = 0, m_busy = 0;
  bool m_quits = false;
};

}  // namespace vastra
