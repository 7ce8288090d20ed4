// Compiles the equations of a configuration before its stages open, because the message of a link that does
// not open does not name the wrong statement.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

// An equation list that does not compile with the variables that it can read.
struct CEquationFinding {
  // One line: the path of the key that the user typed, the name of its object, the number of the statement
  // (from 1), the offset in it (from 0) and the error.
  CString message;
  CString statement;  // its text
  int offset = 0;
};

// One for each list in use. A list whose names cannot be worked out is left out: its stage reports the
// reason.
std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names);

}  // namespace vastra
