// CNodeWorkers: threads for the calls of drivers. The nodes of a scan are asked at the same time, and a call
// that does not return delays neither the scans nor the stop. A host creates one object for each run.
//
// A task is what one node does at a time. If a task has not ended when its wait ends, it is overdue: it goes
// on in the background, and another thread can take its place. There are kPlaces places for the tasks of
// nodes that are present and as many for those of nodes that are away, so that dead nodes do not delay the
// others.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <span>

#include "vastra/platform/string.h"

namespace vastra {

class CNodePool;

class VASTRA_API CNodeTask {
 public:
  using Time = std::chrono::steady_clock::time_point;

  CNodeTask() = default;
  CNodeTask(const CNodeTask&) = delete;
  CNodeTask& operator=(const CNodeTask&) = delete;
  virtual ~CNodeTask() = default;

  CString m_line;  // tasks of the same line run one after the other; empty: a line of its own

 protected:
  // Does the work, on a worker or, without workers, on the thread that wants it. Throws nothing.
  virtual void Work() = 0;
  // Called by Work before each further call of the driver, which has the whole patience again.
  void BeginCall();

 private:
  friend class CNodePool;
  friend class CNodeWorkers;
  enum class EState { idle, queued, running };

  // Guarded by the mutex of the pool from Start until the task is idle again.
  EState m_state = EState::idle;
  bool m_isOverdue = false;
  bool m_isAway = false;     // which places it uses
  bool m_isAwaited = false;  // by the thread in Wait
  bool m_wasBlocked = false;
  Time m_began{}, m_ended{};
  std::shared_ptr<CNodePool> m_pool;  // that runs it
};

class VASTRA_API CNodeWorkers {
 public:
  using Time = CNodeTask::Time;
  using Span = std::chrono::milliseconds;

  // What a wait has found of a task.
  enum class EEnd {
    ended,
    overdue,  // its call has not returned; the task goes on
    blocked   // it could not begin: an overdue task has its line, the host stops, or there is no thread
  };
  // After the host wants to stop, the waits for scans end a little earlier than those for closing.
  enum class EWait { scan, close };
  // Called once in a wait if the host wants to stop meanwhile: with a task that is waited for, and how long.
  using Waiting = std::function<void(const CNodeTask&, Span)>;

  static constexpr int kPlaces = 16;
  // How long the task of a node that is away is waited for: a device that answers at once is back at once.
  static constexpr Span kGrace{20};

  // patience: how long a call of a driver is waited for. stopAsked: whether the host wants to stop; called
  // from the threads that wait. All waits end within patience from then on.
  CNodeWorkers(Span patience, std::function<bool()> stopAsked);
  // Tasks that have not ended go on in the background.
  ~CNodeWorkers();
  CNodeWorkers(const CNodeWorkers&) = delete;
  CNodeWorkers& operator=(const CNodeWorkers&) = delete;

  bool IsIdle(const CNodeTask& task) const;
  // The same after a task that has not begun was taken back.
  bool Recall(CNodeTask& task);
  // Starts an idle task, which the workers keep until it ends.
  void Start(const std::shared_ptr<CNodeTask>& task, bool isAway);
  // Waits for tasks that have been started: for each of a present node until its call has returned or its
  // patience has ended, for the others kGrace.
  void Wait(std::span<const std::shared_ptr<CNodeTask>> tasks, EWait wait, const Waiting& waiting);
  EEnd EndOf(const CNodeTask& task) const;
  // If the task has not ended: leaves it to the workers, which delete it when it ends, also after their own
  // end, and clears task. Else returns false.
  bool Abandon(std::shared_ptr<CNodeTask>& task);
  // How long the present call of a task has taken, or its last one.
  Time::duration Elapsed(const CNodeTask& task) const;

  Span Patience() const { return m_patience; }
  // The number of tasks of this process that go on although nobody waits for them. A host that ends while
  // there are some must end by _exit: a module that is in use cannot be unloaded.
  static int OverdueTasks();

 private:
  Time StopLimit(EWait wait, Time begin) const;

  const Span m_patience;
  const std::function<bool()> m_stopAsked;
  const std::shared_ptr<CNodePool> m_pool;  // shared with its threads
};

}  // namespace vastra
