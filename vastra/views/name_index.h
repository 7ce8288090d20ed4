// The places of the names of a live view in the list of all names.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

constexpr UINT kNotAvailable = 20000;  // the place of a name that does not exist

// Sets index to the place in all of each name of selected. Returns how many do not exist.
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

// The names that have a place. index can be shorter than names: names without an entry are left out, too.
inline CStringArray NamesWithPlace(const CStringArray& names, const CUIntArray& index) {
  CStringArray found;
  for (int i = 0; i < names.GetSize() && i < index.GetSize(); ++i)
    if (index[i] != kNotAvailable) found.Add(names[i]);
  return found;
}

}  // namespace vastra
