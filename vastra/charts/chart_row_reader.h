// CLiveRows and CChartRowReader: the rows of CChartRows in the order of time.
#pragma once

#include <optional>

#include "vastra/charts/chart_rows.h"
#include "vastra/history/row_reader.h"

namespace vastra {

// The rows of the ring in a range. Those of equal moments are in the order in which they were added.
class CLiveRows {
 public:
  // begin: the number of the first sample that is looked at.
  CLiveRows(const CChartRows& rows, const CMomentRange& range, std::uint64_t begin = 0);

  bool Next();
  CMoment Moment() const { return m_piece.moments[m_row]; }
  const float* Values() const { return &m_piece.values[m_row * m_width]; }
  // The number after the last sample that there was when the object was made.
  std::uint64_t End() const { return m_end; }

 private:
  void LoadSorted();

  const CChartRows& m_rows;
  CMomentRange m_range;
  std::uint64_t m_next = 0, m_end = 0;  // samples
  std::size_t m_width = 0;
  bool m_isOrdered = true;  // the clock did not go back
  bool m_isLoaded = false;  // m_piece has all of them
  CLivePiece m_piece;
  std::size_t m_row = 0, m_count = 0;  // in m_piece
};

class CChartRowReader {
 public:
  // rows must exist as long as the reader.
  CChartRowReader(const CChartRows& rows, const CMomentRange& range, const std::vector<CString>& variables);

  // Gets the next row that has a value of one of the variables.
  bool Next();
  CMoment Moment() const { return m_moment; }
  const std::vector<std::optional<float>>& Cells() const { return m_cells; }
  double Progress() const { return m_logs.Progress(); }
  const std::vector<CHistoryFault>& Faults() const { return m_logs.Faults(); }

 private:
  bool TakeLogged();
  bool TakeLive();

  struct CColumn {
    CMoment since;        // the rows before it are of logs
    std::int32_t inRing;  // place, or -1
  };
  std::vector<CColumn> m_columns;
  CRowReader m_logs;
  CLiveRows m_live;
  CHistoryRow m_row;
  bool m_hasRow, m_hasLive;
  CMoment m_moment = 0;
  std::vector<std::optional<float>> m_cells;
};

// The place of each variable among the names of the ring, or -1.
std::vector<std::int32_t> PlacesInRing(const CChartRows& rows, const std::vector<CString>& variables);

}  // namespace vastra
