// CEquationSeparator cuts the text of an equation editor into single statements, without parsing any of them.
// Configurations hold the statements one by one, and the parser only ever sees one at a time.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

class VASTRA_API CEquationSeparator {
 public:
  // Appends to equations each statement of text as it stands, without its ";"; to variables the name that
  // each assigns (nothing for a statement without "="); to positions the offset in text at which each
  // statement starts, and one more entry: the offset behind the last ";". Comments mean nothing here: a ";"
  // or "=" inside one counts. Gives 1.
  int Separate(CString text, CStringArray& equations, CStringArray& variables, CArray<int, int>& positions);
};

// The name that a statement assigns: the last word before its first "=". False without a "=". Words end at
// blanks and line feeds, which cuts off a comment in front of the name.
VASTRA_API bool FindAssignedName(const CString& statement, CString& name);

}  // namespace vastra
