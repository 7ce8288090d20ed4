// Compiles the equations of a configuration before its stages open, because the message of a link that does
// not open does not name the wrong statement.
#pragma once

#include <vector>

#include "host/common/stage_names.h"
#include "vastra/equations/equator.h"

namespace vastra {

// An equation list that does not compile with the variables that it can read.
struct CEquationFinding {
  CString key;    // the path of the key that the user typed
  CString owner;  // the name that the user gave its object, or empty
  int number;     // of the statement, from 1
  CString statement;
  int offset;    // of the fault in the statement, from 0
  CString text;  // what is wrong; for a name also which one was probably meant

  // One line with all of it but the statement.
  CString Line() const;
};

// What is wrong with equations, which can read names; for a name also which one was probably meant.
CString EquationFaultText(const CEquationFault& fault, const CStringArray& names,
                          const CStringArray& equations);

// One for each list in use. A list whose names cannot be worked out is left out: its stage reports the
// reason.
std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names);

}  // namespace vastra
