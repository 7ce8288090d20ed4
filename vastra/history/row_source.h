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

  // Moves to the first row of the range. False without one, and if the log cannot be read: then Fault has the
  // reason.
  bool Open(const CMomentRange& range);
  // Moves to the row after those that Take has returned: false at the end, and with a fault.
  bool Advance() {
    if (m_next == m_samples.count) return Load();
    m_moment = MomentOf(m_samples.times[m_next]);
    return true;
  }
  const CString& Fault() const { return m_values.Fault(); }
  CMoment Moment() const { return m_moment; }  // of the row

  // Gets the row and, up to most rows, those after it whose moments are before limit. They are valid until
  // the next call.
  void Take(CMoment limit, std::uint32_t most, CRowStretch& stretch);

  std::uint64_t Done() const { return m_done; }  // samples that were loaded

 private:
  bool Sort(const CMomentRange& range);
  bool Load();
  CLogValues m_values;
  std::size_t m_order;
  CPlaces m_places;
  std::size_t m_mostBytes;
  std::uint32_t m_begin = 0, m_end = 0;  // samples to load, of m_sorted if the log is not ordered
  std::vector<std::uint32_t> m_sorted;
  CLoadedSamples m_samples;
  std::uint32_t m_next = 0;  // the row in m_samples
  CMoment m_moment = 0;
  std::uint64_t m_done = 0;
};

}  // namespace vastra
