// CRowMerger: merges the rows of several logs by their moments. A log is opened when the rows before it have
// been read, and the memory of all logs that are open is bounded.
#pragma once

#include <list>
#include <map>

#include "vastra/history/repeats.h"
#include "vastra/history/row_source.h"

namespace vastra {

class CRowMerger {
 public:
  CRowMerger(const std::vector<CHistoryLog>& logs, CRowRequest request);

  const std::vector<CString>& Variables() const { return m_request.variables; }
  bool Next(CRowStretch& stretch);
  const std::vector<CHistoryFault>& Faults() const { return m_faults; }
  double Progress() const;

 private:
  // A log that has no row before first.
  struct CPending {
    CMoment first;
    std::size_t order;
    const CHistoryLog* log;
    CPlaces places;
  };
  using CSources = std::list<CRowSource>;

  void AddLog(const CHistoryLog& log, std::size_t order);
  CPlaces PlacesOf(const CSharedNames& names);
  std::size_t MostTogether() const;
  bool Advance();
  void OpenPending();
  bool Choose();
  void End(CSources::iterator source);

  CRowRequest m_request;
  std::map<CString, std::int32_t> m_columns;
  std::map<const std::vector<CString>*, CPlaces> m_places;
  std::vector<CPending> m_pending;  // in the reverse order of their moments
  COpenLogs m_open;
  CSources m_sources;                         // that are open
  std::vector<CSources::iterator> m_waiting;  // a heap, of all sources except m_current
  CSources::iterator m_current;               // has the next row; end of m_sources if there is none
  CMoment m_limit = kFirstMoment;             // no other log has a row before it
  std::size_t m_mostBytes = 0;
  std::uint64_t m_total = 0, m_done = 0;  // samples
  std::vector<CHistoryFault> m_faults;
  CRepeats m_repeats;
};

}  // namespace vastra
