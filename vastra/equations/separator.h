// CEquationSeparator splits the text of an equation editor into statements, without parsing them.
// Configurations store single statements, and the parser compiles one at a time.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

class VASTRA_API CEquationSeparator {
 public:
  // Appends
  //   to equations  each statement of text, unchanged but without its ";",
  //   to variables  the name that each statement assigns, if it has a "=",
  //   to positions  the offset in text of each statement, and the offset after the last ";".
  // Comments are not recognised: a ";" or "=" inside a comment counts. Returns 1.
  int Separate(CString text, CStringArray& equations, CStringArray& variables, CArray<int, int>& positions);
};

// Sets name to the name that a statement assigns: the last word before its first "=". Returns false without a
// "=". Blanks and line feeds separate words, so a comment before the name is not part of it.
VASTRA_API bool FindAssignedName(const CString& statement, CString& name);

}  // namespace vastra
