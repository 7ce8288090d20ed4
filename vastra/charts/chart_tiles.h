// CChartTiles: the steps of curves that were read, in tiles: 512 columns of one level and one variable. Tiles
// that were not used for the longest time are dropped when they take too much memory.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <set>
#include <tuple>

#include "vastra/charts/curve_steps.h"

namespace vastra {

constexpr int kTileBits = 9;   // of columns
constexpr int kTopLevel = 34;  // a tile of this level is longer than all moments

struct CTilePlace {
  int level = 0;
  std::int64_t index = 0;

  static CTilePlace Of(CMoment moment, int level) { return {level, moment >> (level + kTileBits)}; }
  bool operator<(const CTilePlace& other) const {
    return level != other.level ? level < other.level : index < other.index;
  }
  CMomentRange Range() const { return {index << (level + kTileBits), (index + 1) << (level + kTileBits)}; }
};

struct CTile {
  CCurveSteps steps = {};      // the first one is not joined
  bool isExact = false;        // a step is a row, and not a column
  bool isOpen = false;         // samples of the ring can come
  std::uint64_t nextLive = 0;  // of an open tile: the sample of the ring that was not looked at yet
};

class CChartTiles {
 public:
  static constexpr std::size_t kUsualBytes = std::size_t{64} << 20;

  // Null if it is not there. Valid until the next Put, Drop or Clear.
  const CTile* Find(const CString& variable, const CTilePlace& place);
  void Put(const CString& variable, const CTilePlace& place, CTile tile);
  CTile Take(const CString& variable, const CTilePlace& place);  // which is there
  // Drops the tiles that meet the range: of each variable the part of it before a moment.
  void Drop(const CMomentRange& range, const std::function<CMoment(const CString&)>& before);
  void Clear();
  // Notes that a place has more rows than a tile of rows can have; forgotten with the next Drop or Clear.
  void SetDense(const CTilePlace& place) { m_dense.insert(place); }
  bool IsDense(const CTilePlace& place) const { return m_dense.contains(place); }
  // The memory that the tiles can take: as much as usual, or what a picture of so many tiles needs.
  void SetNeed(std::size_t tiles);
  static bool IsRoomFor(std::size_t tiles);  // in a half of the usual memory

 private:
  using CKey = std::tuple<std::size_t, int, std::int64_t>;  // variable, level, index
  struct CEntry {
    CKey key;
    CTile tile;
    std::size_t bytes;
  };
  using CEntries = std::list<CEntry>;
  CEntries::iterator Remove(CEntries::iterator entry);
  CKey KeyOf(const CString& variable, const CTilePlace& place);

  std::size_t m_mostBytes = kUsualBytes, m_bytes = 0;
  CEntries m_entries;  // the one that was used last first
  std::map<CKey, CEntries::iterator> m_byKey;
  std::map<CString, std::size_t> m_numbers;  // of variables
  std::vector<CString> m_variables;
  std::set<CTilePlace> m_dense;
};

}  // namespace vastra
