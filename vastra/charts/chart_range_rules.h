// The visible range of a chart: zoom, pan, follow, the way back and forward, and the query for it. Without
// Qt.
#pragma once

#include <chrono>
#include <vector>

#include "vastra/charts/chart_data.h"
#include "vastra/charts/chart_layout_rules.h"

namespace vastra {

constexpr CMoment kShortestRange = 10;  // milliseconds

// Ranges that are derived from range keep within all moments and are not shorter than kShortestRange.
//
// moment keeps its place in the range. factor: below 1, nearer.
VASTRA_API CMomentRange ZoomedAbout(const CMomentRange& range, CMoment moment, double factor);
VASTRA_API CMomentRange Panned(const CMomentRange& range, CMoment by);
CMomentRange LimitedRange(CMomentRange range);
// All rows, with a little room at both ends. Without rows: the range itself.
CMomentRange WholeRange(const CMomentRange& rows, const CMomentRange& range);
// The range of the same length that ends a little after the last row.
CMomentRange FollowedRange(const CMomentRange& range, const CMomentRange& rows);

CAxisRange ZoomedAbout(const CAxisRange& range, double value, double factor);
CAxisRange Panned(const CAxisRange& range, double by);

// The query for a range in a plot of so many pixels. Its steps begin at multiples of a round length, so that
// the columns stay the same while the range moves, and it has room at both sides.
CChartQuery QueryFor(const CMomentRange& range, double pixels, std::vector<CString> variables);
// Whether the answer to asked serves wanted, a query for another range.
bool Serves(const CChartQuery& asked, const CMomentRange& range, const CChartQuery& wanted);

// A place that the user has looked at.
struct CChartPlace {
  CMomentRange range;
  std::vector<CChartAxis> axes;
};

// The way back and forward through the places. Moves that follow each other at once, as with the wheel, are
// one step.
class CChartPlaces {
 public:
  using Time = std::chrono::steady_clock::time_point;

  // The user leaves place. move: what moves the chart; the same one again at once is no new step.
  void Leave(const CChartPlace& place, int move, Time now);
  bool HasBack() const { return !m_back.empty(); }
  bool HasForward() const { return !m_forward.empty(); }
  // The place to go to from now; only if there is one.
  CChartPlace Back(const CChartPlace& now) { return Step(m_back, m_forward, now); }
  CChartPlace Forward(const CChartPlace& now) { return Step(m_forward, m_back, now); }
  void Clear() { *this = {}; }

 private:
  CChartPlace Step(std::vector<CChartPlace>& from, std::vector<CChartPlace>& to, const CChartPlace& now);

  std::vector<CChartPlace> m_back, m_forward;
  int m_move = -1;
  Time m_moved{};
};

}  // namespace vastra
