// Names that several variables have. The checks warn of them; a stage that joins samples does not open.
#pragma once

#include <functional>

#include "host/common/stage_names.h"

namespace vastra {

// Calls action for each variable of an input node whose name an earlier node has: with the key of the name,
// the name, and the key of the list that has it already.
void ForEachNodeRepeat(const CInputConfig& input,
                       const std::function<void(const CString&, const CString&, const CString&)>& action);

}  // namespace vastra
