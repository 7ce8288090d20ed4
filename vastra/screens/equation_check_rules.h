// Compiles equations to check them: for the equation editor, and for the input page when the variables have
// changed.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

struct CTextFault {
  int statement = 0;  // from 1; 0: no fault
  int offset = 0;     // of the bad token, from 0, in bytes
};

// Compiles statements, which may read varNames and every variable that one of them assigns. Returns the first
// fault; its offset counts from the start of the statement.
CTextFault CheckStatements(const CStringArray& equations, const CStringArray& varNames);
// Splits text into equations, replacing their content, and checks them. The offset counts from the start of
// text.
CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations);

// The name of the variable that equation assigns; empty without a "=".
CString TargetName(const CString& equation);

}  // namespace vastra
