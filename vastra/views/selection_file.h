// Files of a selection: what the user has chosen to see in the trend window (.trn) and in the scan grid
// (.grd). Little-endian, behind a number that tells the kind of file:
//
//   .trn   333666999, i32 count, the curves, u32: the place of the curve on the vertical scale; each curve:
//          its name (string), minimum (f64), maximum (f64), colour (u32)
//   .grd   222444888, i32 count, then the names (strings)
#pragma once

#include <vector>

#include "vastra/platform/array.h"

namespace vastra {

struct CCurveRecord {
  CString name;
  double minimum = 0;
  double maximum = 0;
  COLORREF colour = 0;

  bool operator==(const CCurveRecord&) const = default;
};

struct CTrendSelection {
  std::vector<CCurveRecord> curves;
  UINT scaleIndex = 0;  // as the file has it: it may lie past the curves
};

enum class ESelectionFile {
  good,
  cannotOpen,
  otherKind,   // its first number is not ours
  noCount,     // it ends ahead of the names, or says that there are fewer than none
  endsInside,  // it ends among the names or behind them
  cannotCreate,
  cannotWrite,
};

// What the user is to be told; null: nothing.
const char* TextOf(ESelectionFile result);

// Read a file. What they are given to fill is left alone but for good and endsInside: then it holds what was
// read, whole names and curves. Memory is taken for what is there, not for what the count promises.
ESelectionFile ReadSelection(const CString& path, CTrendSelection& selection);
ESelectionFile ReadSelection(const CString& path, CStringArray& names);

// Write a file anew; one that exists is replaced when all of the new one is written.
ESelectionFile WriteSelection(const CString& path, const CTrendSelection& selection);
ESelectionFile WriteSelection(const CString& path, const CStringArray& names);

}  // namespace vastra
