#include "vastra/plc/node_workers.h"

#include <algorithm>

#include "vastra/plc/node_pool.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kLook{50};  // how often a thread that waits asks whether the host stops
constexpr int kScanPart = 4, kWhole = 5;        // of the patience from a stop on; the rest is for closing
constexpr std::chrono::milliseconds kTellAfter{300};  // a wait of a stop
constexpr std::chrono::milliseconds kToClose{200};    // what a close has in any case

}  // namespace

void CNodeTask::BeginCall() {
  if (!m_pool) return;  // not on a worker
  const std::lock_guard lock(m_pool->m_mutex);
  m_began = Time::clock::now();
}

CNodeWorkers::CNodeWorkers(Span patience, std::function<bool()> stopAsked)
    : m_patience(patience), m_stopAsked(std::move(stopAsked)), m_pool(std::make_shared<CNodePool>()) {}

CNodeWorkers::~CNodeWorkers() { m_pool->Quit(); }

int CNodeWorkers::OverdueTasks() { return CNodePool::Overdue(); }

bool CNodeWorkers::IsIdle(const CNodeTask& task) const {
  const std::lock_guard lock(m_pool->m_mutex);
  return task.m_state == CNodeTask::EState::idle;
}

bool CNodeWorkers::Recall(CNodeTask& task) {
  const std::lock_guard lock(m_pool->m_mutex);
  if (task.m_state == CNodeTask::EState::queued) m_pool->Withdraw(task);
  return task.m_state == CNodeTask::EState::idle;
}

void CNodeWorkers::Start(const std::shared_ptr<CNodeTask>& task, bool isAway) { m_pool->Start(task, isAway); }

// The pool is locked. The end of time while the host does not stop.
CNodeWorkers::Time CNodeWorkers::StopLimit(EWait wait, Time begin) const {
  Time& stopped = m_pool->m_stopped;
  if (!m_stopAsked || !m_stopAsked()) {
    stopped = {};
    return Time::max();
  }
  if (stopped == Time{}) stopped = Time::clock::now();
  const Time last = stopped + m_patience;
  if (wait == EWait::close) return std::max(last, begin + kToClose);
  return std::max(stopped + m_patience * kScanPart / kWhole, std::min(last, begin + kGrace));
}

void CNodeWorkers::Wait(std::span<const std::shared_ptr<CNodeTask>> tasks, EWait wait,
                        const Waiting& waiting) {
  std::unique_lock lock(m_pool->m_mutex);
  const Time begin = Time::clock::now();
  for (bool isTold = false;;) {
    const Time now = Time::clock::now();
    const Time stop = StopLimit(wait, begin);
    m_pool->Look(m_patience);
    Time next = now + kLook;
    const CNodeTask* awaited = nullptr;
    for (const std::shared_ptr<CNodeTask>& task : tasks) {
      if (!task->m_isAwaited) continue;
      const Time limit = std::min(m_pool->Limit(*task, begin, m_patience), stop);
      if (limit <= now) {
        m_pool->GiveUp(*task, wait);
        continue;
      }
      next = std::min(next, limit);
      if (!awaited || awaited->m_state != CNodeTask::EState::running) awaited = task.get();
    }
    if (!awaited) return;
    if (stop != Time::max() && now - begin > kTellAfter && !isTold && waiting) {
      isTold = true;
      lock.unlock();
      waiting(*awaited, std::chrono::ceil<Span>(stop - now));
      lock.lock();
      continue;
    }
    m_pool->m_ended.wait_until(lock, next);
  }
}

CNodeWorkers::EEnd CNodeWorkers::EndOf(const CNodeTask& task) const {
  const std::lock_guard lock(m_pool->m_mutex);
  if (task.m_state != CNodeTask::EState::idle) return EEnd::overdue;
  return task.m_wasBlocked ? EEnd::blocked : EEnd::ended;
}

CNodeWorkers::Time::duration CNodeWorkers::Elapsed(const CNodeTask& task) const {
  const std::lock_guard lock(m_pool->m_mutex);
  const bool isRunning = task.m_state == CNodeTask::EState::running;
  return (isRunning ? Time::clock::now() : task.m_ended) - task.m_began;
}

bool CNodeWorkers::Abandon(std::shared_ptr<CNodeTask>& task) {
  const std::lock_guard lock(m_pool->m_mutex);
  if (task->m_state == CNodeTask::EState::idle) return false;
  task.reset();
  return true;
}

}  // namespace vastra
