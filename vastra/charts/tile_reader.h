// CTileReader: reads the steps of tiles that follow each other, of variables that share a timeline.
#pragma once

#include "vastra/charts/chart_rows.h"
#include "vastra/charts/chart_tiles.h"

namespace vastra {

// A distance of steps that is no gap, on a timeline.
class CJoin {
 public:
  CJoin(const CChartRows& rows, const CTimeline& timeline, const CLiveHead& head)
      : m_rows(rows), m_timeline(timeline), m_head(head) {}
  bool operator()(const CCurveStep& before, const CCurveStep& step) const;

 private:
  const CChartRows& m_rows;
  const CTimeline& m_timeline;
  const CLiveHead& m_head;
};

struct CTileRun {
  const CTimeline* timeline = nullptr;
  std::vector<CString> variables = {};  // each once
  int level = 0;
  std::int64_t begin = 0, end = 0;  // indices of tiles
  bool isExact = false;             // rows, and not columns

  CMomentRange Range() const {
    return {CTilePlace{level, begin}.Range().from, CTilePlace{level, end}.Range().from};
  }
};

// Called now and then with the part of the run that is read, from 0 to 1. False from it ends the reading.
using CReadWatch = std::function<bool(double)>;

class CTileReader {
 public:
  // A tile of rows has at most about so many; with more it is read as columns.
  static constexpr std::size_t kMostRows = 1024;

  CTileReader(const CChartRows& rows, const CLiveHead& head, CChartTiles& tiles, const CTileRun& run);

  // overtaken: the ring has dropped samples that were not read yet.
  enum class EEnd { done, stopped, tooManyRows, overtaken };
  EEnd Read(const CReadWatch& watch);
  // Of a run of one tile that is open: adds the samples that the ring has got since it was read. It was read
  // at the same time for all variables.
  void Refresh();
  const std::vector<CHistoryFault>& Faults() const { return m_faults; }

 private:
  EEnd ReadRows(const CReadWatch& watch);
  EEnd ReadColumns(const CReadWatch& watch);
  EEnd ReadBuckets(const CMomentRange& range, std::uint64_t parts, const CReadWatch& watch);
  void ReadLive(std::uint64_t begin);
  void Add(std::size_t variable, const CCurveStep& step);
  bool HasTooMany() const { return m_run.isExact && m_most > 4 * kMostRows; }
  void PutBefore(std::int64_t index);

  const CChartRows& m_rows;
  const CLiveHead& m_head;
  CChartTiles& m_tiles;
  const CTileRun& m_run;
  const CJoin m_join;
  std::vector<std::vector<CTile>> m_made;  // of each variable
  std::int64_t m_put;                      // tiles before it are in m_tiles
  std::size_t m_most = 0;                  // steps in a tile
  std::vector<CHistoryFault> m_faults;
};

}  // namespace vastra
