// Where the names that a live view shows stand among those that there are.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

constexpr UINT kNotAvailable = 20000;  // the place of a name that is not there

// Puts into index the place of each name of selected in all, and gives how many are not there.
inline int MapNames(const CStringArray& selected, const CStringArray& all, CUIntArray& index) {
  int missing = 0;
  index.SetSize(selected.GetSize());
  for (int i = 0; i < selected.GetSize(); ++i) {
    const int place = FindIn(all, selected[i]);
    missing += place < 0;
    index[i] = place < 0 ? kNotAvailable : static_cast<UINT>(place);
  }
  return missing;
}

// The names whose place is known. index may be shorter than names: those without a place go too.
inline CStringArray NamesWithPlace(const CStringArray& names, const CUIntArray& index) {
  CStringArray found;
  for (int i = 0; i < names.GetSize() && i < index.GetSize(); ++i)
    if (index[i] != kNotAvailable) found.Add(names[i]);
  return found;
}

}  // namespace vastra
