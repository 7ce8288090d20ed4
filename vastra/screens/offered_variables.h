// The variables that a dialog of the configuration sheet offers. They depend on the input page and the smart
// page.
#pragma once

#include "vastra/platform/array.h"

namespace vastra {

class CInputPage;
class CSmartPage;

// Sets names to the variables of the input: the preprocessed ones, or those of the source. Without a page:
// none. 0: a stage has reported why they are not known, and names does not change.
int InputVariables(const CInputPage* input, CStringArray& names);
// Appends the smart output variables to those of the input, if there is a smart page. Result as above.
int OfferedVariables(const CInputPage* input, const CSmartPage* smart, CStringArray& names);

}  // namespace vastra
