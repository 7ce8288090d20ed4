// CFeedContent: the lines for all readers of the feed. Every 50 ms the thread of the feed copies the state of
// the run; a line is formatted when the first reader wants it and shared by the others.
#pragma once

#include <unordered_map>

#include "host/run/feed_json.h"

namespace vastra {

using CFeedLine = std::shared_ptr<const std::string>;

// The lines of a ring.
template <class OBJECT>
class CFeedLines {
 public:
  using Ring = CFeedRing<OBJECT>;
  using Format = std::string (*)(const typename Ring::CEntry& entry);

  CFeedLines(const Ring& ring, Format format) : m_ring(ring), m_format(format) {}
  const Ring& GetRing() const { return m_ring; }

  // The next line from cursor on, which moves behind it; null: there is none yet. missed: the lines before it
  // that are not kept any more.
  CFeedLine Next(std::uint64_t& cursor, std::uint64_t& missed) {
    const auto entry = m_ring.Find(cursor);
    if (!entry) return nullptr;
    missed = entry->number - cursor;
    cursor = entry->number + 1;
    CSlot& slot = m_slots[entry->number % kFeedKept];
    if (slot.number != entry->number)
      slot = {entry->number, std::make_shared<const std::string>(m_format(*entry))};
    return slot.line;
  }

 private:
  struct CSlot {
    std::uint64_t number = 0;
    CFeedLine line;
  };

  const Ring& m_ring;
  const Format m_format;
  std::array<CSlot, kFeedKept> m_slots;
};

class CFeedContent {
 public:
  using Time = std::chrono::steady_clock::time_point;
  static constexpr std::chrono::milliseconds kTick{50};

  CFeedContent(const CFeedSource& source, const CFeedOwner& owner);

  void Refresh(Time now);
  Time RefreshedAt() const { return m_refreshed; }
  const CFeedSource::CView& View() const { return m_view; }
  // Counts the changes of what a state line has, except times and free bytes.
  std::uint64_t StateChange() const { return m_stateChange; }

  CFeedLine Hello();
  CFeedLine State();
  CFeedLine Counts();
  // The number of the newest sample; 0: there is none with the names of the view.
  std::uint64_t SampleNumber() const { return m_hasSample ? m_newest.number : 0; }
  CFeedLine Sample();
  CFeedLine Sample(const std::vector<int>& indexes);
  // The indexes of variables in a sample; -1: it has none of this name.
  std::vector<int> IndexesOf(const std::vector<CString>& variables);

  CFeedLines<CKeptMessage> m_messages;
  CFeedLines<CFeedLog> m_logs;

 private:
  void WatchFolders();
  void FormatSample();

  const CFeedSource& m_source;
  const CFeedOwner m_owner;
  CFeedFolders m_folders;
  Time m_refreshed{};
  CFeedSource::CView m_view;
  CLiveNewest m_newest;
  bool m_hasSample = false;
  std::uint64_t m_stateChange = 0;
  CFeedLine m_hello, m_state, m_counts, m_sampleLine;  // null: not formatted yet
  CFeedSample m_sample;
  bool m_isSampleFormatted = false;
  std::unordered_map<std::string_view, int> m_indexes;  // of the names of m_view; empty: not made yet
};

}  // namespace vastra
