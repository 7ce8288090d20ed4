#include "vastra/plc/node_pool.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

#include "vastra/platform/thread.h"

namespace vastra {
namespace {

std::atomic<int> g_overdue{0};

constexpr std::size_t kMostFree = 2 * CNodeWorkers::kPlaces;  // threads that wait for work

}  // namespace

int CNodePool::Overdue() { return g_overdue; }

void CNodePool::Start(const std::shared_ptr<CNodeTask>& task, bool isAway, CNodeWorkers::Span patience) {
  const std::lock_guard lock(m_mutex);
  const Time now = Time::clock::now();
  for (const std::shared_ptr<CNodeTask>& other : m_running)  // nobody waits for a node that is away
    if (!other->m_isAwaited && !other->m_isOverdue && now - other->m_began > patience) MakeOverdue(*other);
  task->m_pool = shared_from_this();
  task->m_state = EState::queued;
  task->m_isAway = isAway;
  task->m_isOverdue = task->m_wasBlocked = false;
  task->m_isAwaited = true;
  ++m_awaited;
  m_queue.push_back(task);
  if (m_free < m_queue.size() && (m_free == 0 || m_threads < kMostFree)) MakeThread();
  m_work.notify_one();
}

// Without any thread nothing can begin: the task is blocked.
void CNodePool::MakeThread() {
  try {
    const CSignalsBlocked noSignals;
    std::thread([pool = shared_from_this()] { pool->Main(); }).detach();
    ++m_threads;
  } catch (const std::system_error&) {
    if (m_threads == m_busy) Withdraw(*m_queue.back());
  }
}

void CNodePool::Main() {
  std::unique_lock lock(m_mutex);
  while (!m_quits && m_free < kMostFree) {
    std::shared_ptr<CNodeTask> task = TakeNext();
    if (!task) {
      ++m_free;
      m_work.wait(lock);
      --m_free;
      continue;
    }
    lock.unlock();
    task->Work();
    lock.lock();
    const bool wasOverdue = End(*task);
    lock.unlock();
    task.reset();  // deletes the node if the run has left it, and a driver can hang in its Close, too
    if (wasOverdue) --g_overdue;
    lock.lock();
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
  ++m_used[task->m_isAway];
  task->m_state = EState::running;
  task->m_began = Time::clock::now();
  return task;
}

bool CNodePool::CanBegin(const CNodeTask& task) const {
  return m_used[task.m_isAway] < CNodeWorkers::kPlaces && !HasLine(task, false);
}

bool CNodePool::HasLine(const CNodeTask& task, bool onlyOverdue) const {
  return !task.m_line.IsEmpty() && std::any_of(m_running.begin(), m_running.end(), [&](const auto& other) {
    return other->m_line == task.m_line && (other->m_isOverdue || !onlyOverdue);
  });
}

CNodePool::Time CNodePool::Limit(const CNodeTask& task, Time begin, CNodeWorkers::Span patience) const {
  if (task.m_isAway) return begin + CNodeWorkers::kGrace;
  if (task.m_state == EState::running) return task.m_began + patience;
  return HasLine(task, true) ? begin : Time::max();
}

void CNodePool::GiveUp(CNodeTask& task) {
  if (task.m_isAway)
    StopAwaiting(task);  // has its place until its own patience ends
  else if (task.m_state == EState::queued)
    Withdraw(task);
  else
    MakeOverdue(task);
}

void CNodePool::MakeOverdue(CNodeTask& task) {
  StopAwaiting(task);
  task.m_isOverdue = true;
  ++g_overdue;
  --m_used[task.m_isAway];
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
  for (const std::shared_ptr<CNodeTask>& task : m_queue) task->m_state = EState::idle;
  m_queue.clear();
  for (const std::shared_ptr<CNodeTask>& task : m_running)
    if (!task->m_isOverdue) MakeOverdue(*task);
  m_work.notify_all();
  m_left.wait(lock, [this] { return m_threads == m_busy; });
}

}  // namespace vastra
