// Which variables a dialog of the configuration sheet offers, by what the pages in front of it hold.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

class CInputPage;
class CSmartPage;

// What the input gives: the preprocessed variables, or those of the source, which closed temporary stages are
// asked for. Without a page: none. 0, when the stages have told why, and names is as it was.
int InputVariables(const CInputPage* input, CStringArray& names);
// The same with the smart output variables behind them; without a smart page, those of the input alone.
int OfferedVariables(const CInputPage* input, const CSmartPage* smart, CStringArray& names);

}  // namespace vastra
