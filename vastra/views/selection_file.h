// The files of a selection of variables in the trend window (.trn) or in the scan grid (.grd). Little-endian,
// after a number that identifies the kind of file:
//
//   .trn   333666999, i32 count, the curves, u32: the index of the curve on the vertical scale; each curve:
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
  UINT scaleIndex = 0;  // as in the file: can be larger than the last index
};

enum class ESelectionFile {
  good,
  cannotOpen,
  otherKind,   // another first number
  noCount,     // it ends before the names, or the count is negative
  endsInside,  // it ends within the names or after them
  cannotCreate,
  cannotWrite,
};

// The message for the user; null: none.
const char* TextOf(ESelectionFile result);

// Read a file. The second argument changes only for good and endsInside: then it has the names and curves
// that were read completely. Memory depends on the size of the file, not on its count.
ESelectionFile ReadSelection(const CString& path, CTrendSelection& selection);
ESelectionFile ReadSelection(const CString& path, CStringArray& names);

// Write a file. An existing file is replaced when the new one is complete.
ESelectionFile WriteSelection(const CString& path, const CTrendSelection& selection);
ESelectionFile WriteSelection(const CString& path, const CStringArray& names);

}  // namespace vastra
