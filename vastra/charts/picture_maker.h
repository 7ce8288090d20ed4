// CPictureMaker: makes the picture of a query of tiles, and reads the tiles that are missing.
//
// A tile of columns has the level of the query. Where rows are rare, a tile of rows serves all levels below
// its own: then its level is the highest at which a tile has few rows.
#pragma once

#include "vastra/charts/tile_reader.h"

namespace vastra {

// Some rows of the range of a query, by variables: what is shown while very many are read.
using CSketch = std::map<CString, CCurveSteps>;

class CPictureMaker {
 public:
  // All must exist as long as the maker.
  CPictureMaker(const CChartRows& rows, CChartTiles& tiles, const CChartQuery& query);

  // Reads what is missing. watch gets the part that is read, and can end it. If there are very many rows to
  // read, a sketch of them is there at the first call of watch. False: it was ended, or the ring has dropped
  // samples that were not read yet, so that rows are not complete any more.
  bool Read(const CReadWatch& watch);
  const CSketch& Sketch() const { return m_sketch; }
  // What is there. Where a tile is missing, those of other levels take its place, or else the sketch.
  CChartPicture Make(const CSketch& sketch = {}) const;
  const std::vector<CHistoryFault>& Faults() const { return m_faults; }

 private:
  struct CPart {
    CTilePlace place;
    bool isExact;
  };
  // The tiles of variables that share a timeline.
  struct CCover {
    CVariableGroup group;
    std::vector<CPart> parts;  // in the order of time
  };

  CCover CoverOf(const CVariableGroup& group) const;
  CPart PartAt(const CTimeline& timeline, CMoment moment) const;
  bool IsThere(const CString& variable, const CPart& part) const;
  bool MakeOfFiner(const CTimeline& timeline, const CString& variable, const CTilePlace& place,
                   int depth) const;
  std::vector<CString> Missing(const CCover& cover, const CPart& part) const;
  int AheadOf(const CTimeline& timeline, const CPart& part) const;
  std::vector<CTileRun> MissingRuns() const;
  bool AreVeryMany(const std::vector<CTileRun>& runs) const;
  void MakeSketch();
  void AddSketched(const CTimeline& timeline, const std::vector<CString>& variables, CMoment moment);
  void RefreshOpen(const CCover& cover, const CPart& part) const;
  CCurveSteps CurveOf(const CCover& cover, const CString& variable, const CSketch& sketch) const;
  void AddOther(CCurveSteps& curve, const CString& variable, const CTilePlace& place,
                const CSketch& sketch) const;

  const CChartRows& m_rows;
  CChartTiles& m_tiles;
  const CChartQuery& m_query;
  const int m_level;
  const CLiveHead m_head;
  const CMomentRange m_there;  // where there are rows
  std::vector<CCover> m_covers;
  bool m_isReadAhead = false;
  CSketch m_sketch;
  std::vector<CHistoryFault> m_faults;
};

}  // namespace vastra
