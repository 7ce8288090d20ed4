// CRunFeedContent: the lines about a run. Every 50 ms the thread of the feed copies the state of the run; a
// line is formatted when the first reader wants it and shared by the others.
#pragma once

#include "host/feed/feed_content.h"
#include "host/run/feed_json.h"

namespace vastra {

// The lines of a ring.
template <class OBJECT>
class CFeedLines : public CFeedRecords {
 public:
  using Ring = CFeedRing<OBJECT>;
  using Format = std::string (*)(const typename Ring::CEntry& entry);

  CFeedLines(const Ring& ring, Format format) : m_ring(ring), m_format(format) {}

  std::uint64_t Oldest() const override { return m_ring.Oldest(); }
  std::uint64_t Next() const override { return m_ring.Next(); }
  CFeedLine Take(std::uint64_t& cursor, std::uint64_t& missed) override {
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

class CRunFeedContent : public CFeedContent {
 public:
  CRunFeedContent(const CFeedSource& source, const CFeedOwner& owner);

  std::uint64_t HelloChange() const override { return m_view.change; }
  std::uint64_t StateChange() const override { return m_stateChange; }
  std::uint64_t NamesChange() const override { return m_namesChange; }
  CFeedLine Hello() override;
  CFeedLine State() override;
  CFeedLine Counts() override;
  std::uint64_t SampleNumber() const override { return m_hasSample ? m_newest.number : 0; }
  CFeedLine Sample() override;
  CFeedLine Sample(const std::vector<int>& indexes) override;
  std::vector<int> IndexesOf(const std::vector<CString>& variables) override;
  CFeedRecords& Messages() override { return m_messages; }
  CFeedRecords& Logs() override { return m_logs; }

 private:
  void Look() override;
  void WatchFolders();
  void FormatSample();

  CFeedLines<CKeptMessage> m_messages;
  CFeedLines<CFeedLog> m_logs;
  const CFeedSource& m_source;
  const CFeedOwner m_owner;
  CFeedFolders m_folders;
  CFeedSource::CView m_view;
  CLiveNewest m_newest;
  bool m_hasSample = false;
  std::uint64_t m_stateChange = 0, m_namesChange = 0;
  CFeedLine m_hello, m_state, m_counts, m_sampleLine;  // null: not formatted yet
  CFeedSample m_sample;
  bool m_isSampleFormatted = false;
  CFeedPlaces m_indexes;  // of the names of m_view; empty: not made yet
};

}  // namespace vastra
