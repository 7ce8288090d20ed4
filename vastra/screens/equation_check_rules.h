// The check that the equation editor makes before it gives a text away.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CTextFault {
  int statement = 0;  // from 1; 0: there is none
  int offset = 0;     // of the bad token in the text, from 0
};

// Splits text into statements, in place of what equations holds, and compiles each of them. It may read
// varNames and what any other statement assigns. Gives the first fault.
CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations);

}  // namespace vastra
