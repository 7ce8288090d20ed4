// CRowSource: the rows of one log in a range, in the order of their moments.
#pragma once

#include "vastra/history/log_values.h"
#include "vastra/history/row_reader.h"

namespace vastra {

// For each column of a request the place of its value in a log, or -1.
using CPlaces = std::shared_ptr<const std::vector<std::int32_t>>;

class CRowSource {
 public:
  // order: of the log in the catalogue. mostBytes: of samples that are loaded at once.
  CRowSource(const CHistoryLog& log, std::size_t order, CPlaces places, COpenLogs& open,
             std::size_t mostBytes)
      : m_values(log, open), m_order(order), m_places(std::move(places)), m_mostBytes(mostBytes) {}

  const CHistoryLog& Log() const { return m_values.Log(); }
  std::size_t Order() const { return m_order; }

  // Moves to the first row of the range; Next to the next one. False at the end, and if the log cannot be
  // read: then Fault has the reason.
  bool Open(const CMomentRange& range);
  bool Next() {
    if (m_left == 0) return Load();
    Show(m_shown + 1);
    return true;
  }
  const CString& Fault() const { return m_values.Fault(); }

  // Of the row.
  CMoment Moment() const { return m_moment; }
  void Get(CHistoryRow& row) const {
    row.moment = m_moment;
    row.time = m_samples.times[m_shown];
    row.values = m_record + SizeOfCount(m_samples.values);
    row.count = m_samples.values;
    row.places = m_places->data();
    row.log = &Log();
  }

  std::uint64_t Done() const { return m_done; }  // samples that were loaded

 private:
  bool Sort(const CMomentRange& range);
  bool Load();
  void Show(std::uint32_t index) {
    m_shown = index;
    m_left = m_samples.count - index - 1;
    m_record = m_samples.records + index * m_samples.recordSize;
    m_moment = MomentOf(m_samples.times[index]);
  }

  CLogValues m_values;
  std::size_t m_order;
  CPlaces m_places;
  std::size_t m_mostBytes;
  std::uint32_t m_next = 0, m_end = 0;  // samples to load, of m_sorted if the log is not ordered
  std::vector<std::uint32_t> m_sorted;
  CLoadedSamples m_samples;
  std::uint32_t m_shown = 0, m_left = 0;  // the row in m_samples, and rows after it
  const char* m_record = nullptr;
  CMoment m_moment = 0;
  std::uint64_t m_done = 0;
};

}  // namespace vastra
