// The check that the equation editor makes before it gives a text away.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CTextFault {
  int statement = 0;  // from 1; 0: there is none
  int offset = 0;     // of the bad token in the text, from 0
};

// Splits text into statements, in place of what equations holds, and compiles them as a link would whose
// samples have varNames: a statement may also read what another one assigns. Gives the first fault.
CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations);

}  // namespace vastra
