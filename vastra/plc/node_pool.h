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

  void Start(const std::shared_ptr<CNodeTask>& task, bool isAway, CNodeWorkers::Span patience);
  // Locked: stops waiting for a task that has not ended.
  void GiveUp(CNodeTask& task);
  // Locked: when the wait for a task ends that began at begin.
  Time Limit(const CNodeTask& task, Time begin, CNodeWorkers::Span patience) const;
  // Leaves what runs in the background and waits for the threads that are free.
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
  void MakeThread();
  void MakeOverdue(CNodeTask& task);
  bool End(CNodeTask& task);
  void Withdraw(CNodeTask& task);
  void StopAwaiting(CNodeTask& task);

  std::condition_variable m_work, m_left;
  std::vector<std::shared_ptr<CNodeTask>> m_queue;  // in the order of Start
  std::vector<std::shared_ptr<CNodeTask>> m_running;
  int m_used[2] = {0, 0};  // places, by m_isAway
  std::size_t m_threads = 0, m_free = 0, m_busy = 0;
  bool m_quits = false;
};

}  // namespace vastra
