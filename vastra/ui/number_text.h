// Numbers as the windows write and read them: with a point, whatever the user's language.
#pragma once

#include <cstdint>

#include "vastra/platform/string.h"

namespace vastra {

// Up to digits significant digits, without zeros at the end; with an exponent where that is shorter.
VASTRA_API CString NumberText(double value, int digits);

// False, with value left alone, unless text is one finite number, with blanks around it or not.
VASTRA_API bool ParseNumber(const CString& text, double& value);
// The same for a whole number from low to high.
VASTRA_API bool ParseWhole(const CString& text, std::int64_t low, std::int64_t high, std::int64_t& value);

}  // namespace vastra
