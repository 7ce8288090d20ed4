#include "host/web/history_catalogues.h"

#include <algorithm>

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kBetweenLooksAtStop{100};

}  // namespace

// The catalogues that are dropped are destroyed without the lock.
CSharedLogs CHistoryCatalogues::Logs(const CHistorySource& source, const CWebStop& isStopped) {
  std::vector<CSharedEntry> dropped;
  std::unique_lock lock(m_mutex);
  const CSharedEntry entry = EntryOf(source);
  dropped = TakeUnused();
  for (;;) {
    if (entry->logs && (entry->isLooking || Clock::now() < entry->freshUntil)) break;
    if (!entry->isLooking) {
      Look(lock, *entry);
      break;
    }
    if (isStopped && isStopped()) break;
    m_looked.wait_for(lock, kBetweenLooksAtStop);
  }
  CSharedLogs logs = entry->logs;
  lock.unlock();
  return logs;
}

void CHistoryCatalogues::DropUnused() {
  std::vector<CSharedEntry> dropped;
  const std::lock_guard lock(m_mutex);
  dropped = TakeUnused();
}

CHistoryCatalogues::CSharedEntry CHistoryCatalogues::EntryOf(const CHistorySource& source) {
  CSharedEntry& entry = m_entries[{source.folders, source.isRecursive}];
  if (!entry) {
    entry = std::make_shared<CEntry>();
    for (const std::string& folder : source.folders)
      entry->catalogue.Add(CString(folder), source.isRecursive);
  }
  entry->used = Clock::now();
  return entry;
}

std::vector<CHistoryCatalogues::CSharedEntry> CHistoryCatalogues::TakeUnused() {
  std::vector<CSharedEntry> taken;
  const Clock::time_point oldest = Clock::now() - m_limits.unused;
  while (!m_entries.empty()) {
    const auto first = std::min_element(m_entries.begin(), m_entries.end(), [](const auto& a, const auto& b) {
      return a.second->used < b.second->used;
    });
    if (first->second->used >= oldest && m_entries.size() <= m_limits.most) break;
    taken.push_back(std::move(first->second));
    m_entries.erase(first);
  }
  return taken;
}

// Looks at the folders without the lock.
void CHistoryCatalogues::Look(std::unique_lock<std::mutex>& lock, CEntry& entry) {
  struct CLooking {
    CHistoryCatalogues& owner;
    std::unique_lock<std::mutex>& lock;
    CEntry& entry;
    ~CLooking() {
      if (!lock) lock.lock();
      entry.isLooking = false;
      owner.m_looked.notify_all();
    }
  } looking{*this, lock, entry};
  entry.isLooking = true;
  lock.unlock();
  const Clock::time_point begin = Clock::now();
  CSharedLogs logs;
  if (entry.catalogue.Scan() || !entry.logs)
    logs = std::make_shared<const std::vector<CHistoryLog>>(entry.catalogue.Logs());
  const Clock::duration taken = Clock::now() - begin;
  lock.lock();
  if (logs) entry.logs = std::move(logs);
  entry.freshUntil = begin + std::max<Clock::duration>(m_limits.fresh, m_limits.share * taken);
}

}  // namespace vastra
