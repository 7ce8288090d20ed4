// CFeedRing: the last 500 messages or logs for the readers of the feed. The run adds them; the thread of the
// feed looks for the next one of each reader. The mutex is held while a pointer is copied.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

namespace vastra {

constexpr std::size_t kFeedKept = 500;

template <class OBJECT>
class CFeedRing {
 public:
  struct CEntry {
    std::uint64_t number = 0;  // from 1
    OBJECT object;
  };
  using Entry = std::shared_ptr<const CEntry>;

  Entry Add(OBJECT object) {
    const auto entry = std::make_shared<CEntry>(CEntry{0, std::move(object)});
    Entry former;  // is destroyed after the lock
    const std::lock_guard lock(m_mutex);
    entry->number = m_next++;
    former = std::move(m_entries[entry->number % kFeedKept]);
    m_entries[entry->number % kFeedKept] = entry;
    return entry;
  }
  // The entry with this number, or the oldest one after it; null if there is none yet.
  Entry Find(std::uint64_t number) const {
    const std::lock_guard lock(m_mutex);
    if (number >= m_next) return nullptr;
    return m_entries[std::max(number, OldestNumber()) % kFeedKept];
  }
  std::uint64_t Oldest() const {
    const std::lock_guard lock(m_mutex);
    return OldestNumber();
  }
  // The number of the next entry.
  std::uint64_t Next() const {
    const std::lock_guard lock(m_mutex);
    return m_next;
  }

 private:
  std::uint64_t OldestNumber() const { return m_next > kFeedKept ? m_next - kFeedKept : 1; }

  mutable std::mutex m_mutex;
  std::uint64_t m_next = 1;
  std::array<Entry, kFeedKept> m_entries;
};

}  // namespace vastra
