// The equation lists of a configuration that are in use, each with the names that it can read.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

struct CEquationList {
  CString object;    // the path of the object that has it
  CString userName;  // the name that the user gave this object, or empty
  const char *textKey, *listKey;
  const CString& text;  // that it may come from
  const CStringArray& equations;
  const CStringArray& inputs;
  CStringArray own;  // names that the link uses if inputs is empty: those of its result

  const CStringArray& Names() const { return inputs.IsEmpty() ? own : inputs; }
  // The path of the key that the user typed.
  CString Key() const;
};

// A list whose names cannot be worked out is left out. The result has references to both arguments.
std::vector<CEquationList> EquationLists(const CConfiguration& configuration, const CStageNames& names);

}  // namespace vastra
