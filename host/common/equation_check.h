// Compiles the equations of a configuration before its stages open, so that a user learns which statement is
// wrong: the message of a link that does not open does not name the statement.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

// An equation list that does not compile against the names that it will see.
struct CEquationFinding {
  CString message;    // one line: the path of the key that the user typed, the name of its object, the
                      // statement, counted from 1, the offset in it, counted from 0, and what is wrong there
  CString statement;  // its text
  int offset = 0;
};

// One for each list in use. A list whose names cannot be worked out is left out: its stage reports the
// reason.
std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names);

}  // namespace vastra
