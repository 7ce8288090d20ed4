// Compiles the equations of a configuration before its stages open, so that a user learns which statement is
// wrong: a link that does not open names no statement.
#pragma once

#include <vector>

#include "host/common/stage_names.h"

namespace vastra {

// One line for each equation list in use that does not compile against the names that it will see: the path
// of the list, the statement, counted from 1, the offset in it, counted from 0, and what is wrong there. A
// list whose names are not to be had is passed over: its stage will tell.
std::vector<CString> FindEquationFaults(const CConfiguration& configuration, const CStageNames& names);

}  // namespace vastra
