#include "vastra/plc/node_pool.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <thread>

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

std::atomic<int> g_overdue{0};

constexpr std::size_t kMostUsable =
    std::size_t{2} * CNodeWorkers::kPlaces;  // threads without those of overdue tasks

}  // namespace

int CNodePool::Overdue() { return g_overdue; }

void CNodePool::Start(const std::shared_ptr<CNodeTask>& task, bool isAway) {
  const std::lock_guard lock(m_mutex);
  m_running.reserve(m_running.size() + m_queue.size() + 1);  // a worker allocates nothing
  m_queue.push_back(task);
  task->m_pool = shared_from_this();
  task->m_state = EState::queued;
  task->m_isAway = isAway;
  task->m_isOverdue = task->m_wasBlocked = false;
  task->m_isAwaited = true;
  ++m_awaited;
  MakeThread();
  m_work.notify_one();
}

void CNodePool::Look(CNodeWorkers::Span patience) {
  const Time now = Time::clock::now();
  for (const std::shared_ptr<CNodeTask>& task : m_running)
    if (!task->m_isAwaited && !task->m_isOverdue && now - task->m_began > patience) MakeOverdue(*task);
  MakeThread();
}

// Unless there are enough that can be used. Without any of them no task can begin.
void CNodePool::MakeThread() {
  const std::size_t wanted = m_queue.size() + static_cast<std::size_t>(m_used[0] + m_used[1]);
  if (m_quits || m_queue.empty() || Usable() >= std::min(wanted, kMostUsable)) return;
  try {
    const CSignalsBlocked noSignals;
    std::thread([pool = shared_from_this()] { pool->Main(); }).detach();
    ++m_threads;
  } catch (const std::exception&) {  // the next look tries it again
  }
}

void CNodePool::Main() {
  std::unique_lock lock(m_mutex);
  while (m_free < kMostUsable) {
    std::shared_ptr<CNodeTask> task = TakeNext();
    if (!task && m_quits) break;
    if (!task) {
      ++m_free;
      m_work.wait(lock);
      --m_free;
      continue;
    }
    if (m_quits) m_left.notify_all();  // one less is free
    lock.unlock();
    task->Work();
    lock.lock();
    const bool wasOverdue = End(*task);
    if (task.use_count() == 1) {  // the run has left the node, and its driver can hang in its Close, too
      lock.unlock();
      task.reset();
      lock.lock();
    }
    if (wasOverdue) --g_overdue;
    --m_busy;
  }
  --m_threads;
  m_left.notify_all();
}

// Locked: the first task that can begin, or null.
std::shared_ptr<CNodeTask> CNodePool::TakeNext() {
  const auto next =
      std::find_if(m_queue.begin(), m_queue.end(), [this](auto& task) { return CanBegin(*task); });
  if (next == m_queue.end()) return nullptr;
  std::shared_ptr<CNodeTask> task = std::move(*next);
  m_queue.erase(next);
  m_running.push_back(task);
  ++m_busy;
  if (!task->m_isOverdue) ++m_used[task->m_isAway];
  task->m_state = EState::running;
  task->m_began = Time::clock::now();
  return task;
}

bool CNodePool::CanBegin(const CNodeTask& task) const {
  return (task.m_isOverdue || m_used[task.m_isAway] < CNodeWorkers::kPlaces) && !HasLine(task, false);
}

bool CNodePool::HasLine(const CNodeTask& task, bool onlyOverdue) const {
  return !task.m_line.IsEmpty() && std::any_of(m_running.begin(), m_running.end(), [&](const auto& other) {
    return other->m_line == task.m_line && (other->m_isOverdue || !onlyOverdue);
  });
}

CNodePool::Time CNodePool::Limit(const CNodeTask& task, Time begin, CNodeWorkers::Span patience) const {
  if (task.m_isAway) return begin + CNodeWorkers::kGrace;
  if (task.m_state == EState::running) return task.m_began + patience;
  return HasLine(task, true) || Usable() == 0 ? begin : Time::max();
}

void CNodePool::GiveUp(CNodeTask& task, CNodeWorkers::EWait wait) {
  const bool isQueued = task.m_state == EState::queued;
  if (task.m_isAway || (isQueued && wait == CNodeWorkers::EWait::close))
    StopAwaiting(task);  // one that runs has its place until its own patience ends
  else if (isQueued)
    Withdraw(task);
  else
    MakeOverdue(task);
}

void CNodePool::MakeOverdue(CNodeTask& task) {
  StopAwaiting(task);
  task.m_isOverdue = true;
  ++g_overdue;
  --m_used[task.m_isAway];
  MakeThread();
  m_work.notify_all();
}

void CNodePool::Withdraw(CNodeTask& task) {
  StopAwaiting(task);
  task.m_state = EState::idle;
  task.m_wasBlocked = true;
  std::erase_if(m_queue, [&](const auto& other) { return other.get() == &task; });
}

void CNodePool::StopAwaiting(CNodeTask& task) {
  if (!task.m_isAwaited) return;
  task.m_isAwaited = false;
  if (--m_awaited == 0) m_ended.notify_all();
}

// Locked: returns whether the task was overdue.
bool CNodePool::End(CNodeTask& task) {
  task.m_ended = Time::clock::now();
  task.m_state = EState::idle;
  if (!task.m_isOverdue) --m_used[task.m_isAway];
  StopAwaiting(task);
  std::erase_if(m_running, [&](const auto& other) { return other.get() == &task; });
  if (!m_queue.empty()) m_work.notify_all();  // a line or a place is free
  return task.m_isOverdue;
}

void CNodePool::Quit() {
  std::unique_lock lock(m_mutex);
  m_quits = true;
  for (const std::shared_ptr<CNodeTask>& task : m_queue) task->m_isOverdue = true;
  g_overdue += static_cast<int>(m_queue.size());
  for (const std::shared_ptr<CNodeTask>& task : m_running)
    if (!task->m_isOverdue) MakeOverdue(*task);
  m_work.notify_all();
  m_left.wait(lock, [this] { return m_threads == m_busy; });
}

}  // namespace vastra
