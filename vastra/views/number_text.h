// Numbers as the views write and read them: with a point, whatever the user's language.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Up to digits significant digits, without zeros at the end; with an exponent where that is shorter.
CString NumberText(double value, int digits);

// False, with value left alone, unless text is one finite number, with blanks around it or not.
bool ParseNumber(CString text, double& value);

}  // namespace vastra
