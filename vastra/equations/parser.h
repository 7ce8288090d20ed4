// CParser compiles one statement of the equation language to a list of lines.
#pragma once

#include "vastra/equations/line_code.h"
#include "vastra/platform/array.h"

namespace vastra {

// Threads: several threads can compile at the same time, each with its own parser.
class VASTRA_API CParser {
 public:
  // Seeds rand() with the present time.
  CParser();

  // Compiles the first statement of equation, up to its ";" or the end. Returns 1, or 0 if it has a fault.
  // code   the lines are added at its tail; after a fault those before it.
  // names  the known variables in the order of their indexes. A new name that the statement assigns is added,
  //        even if a fault follows it.
  int Parse(CString equation, CLineCodeList* code, CStringArray* names);

  // After a failure the offset of the bad token in equation, from 0.
  int GetLastError() const { return m_nLastError; }

  // After a failure the message for the user; empty after success.
  const char* GetLastFault() const { return m_lastFault; }

  // Whether the fault is a name that is neither known nor assigned.
  bool IsUnknownName() const { return m_isUnknownName; }

  // The index in names of the assigned name; -1 if the fault is before it.
  int GetTarget() const { return m_nTarget; }

 private:
  int m_nLastError = 0;
  const char* m_lastFault = "";
  int m_nTarget = -1;
  bool m_isUnknownName = false;
};

// Whether equations can read and assign a variable of this name: one word of the language, not reserved.
VASTRA_API bool IsVariableName(const CString& name);

}  // namespace vastra
