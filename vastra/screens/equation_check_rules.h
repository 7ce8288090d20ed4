// The checks that are made before equations are given away: by their editor, and when what they may read has
// changed.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CTextFault {
  int statement = 0;  // from 1; 0: there is none
  int offset = 0;     // of the bad token, from 0
};

// Compiles statements, which may read varNames and what any of them assigns. Gives the first fault, by its
// offset in the statement.
CTextFault CheckStatements(const CStringArray& equations, const CStringArray& varNames);
// The same for a text, which is split into statements, in place of what equations holds.
CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations);

// The name that a statement assigns; empty without a "=".
CString TargetName(const CString& equation);

}  // namespace vastra
