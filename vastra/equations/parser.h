// CParser compiles one statement of the equation language to a list of instructions.
#pragma once

#include "vastra/equations/line_code.h"
#include "vastra/platform/array.h"

namespace vastra {

// Threads: each thread compiles with a state of its own.
class VASTRA_API CParser {
 public:
  // Seeds the random numbers of the language with the present time.
  CParser();

  // Compiles the first statement of equation, to the end or to its ";". 1, or 0 if it has a fault.
  // code   receives the lines at its tail; after a failure those made so far.
  // names  the known variables in the order of their indexes. A new name that the statement assigns is added,
  //        even if a fault follows it.
  int Parse(CString equation, CLineCodeList* code, CStringArray* names);

  // After a failure the offset of the bad token in equation, from 0.
  int GetLastError() const { return m_nLastError; }

  // After a failure what is wrong there, in words; empty after success.
  const char* GetLastFault() const { return m_lastFault; }

  // Index in names of what the statement assigns, -1 if the parser did not come that far.
  int GetTarget() const { return m_nTarget; }

 private:
  int m_nLastError = 0;
  const char* m_lastFault = "";
  int m_nTarget = -1;
};

}  // namespace vastra
