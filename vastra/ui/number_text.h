// Numbers as the windows write and read them: with a decimal point in all languages.
#pragma once

#include <cstdint>

#include "vastra/platform/string.h"

namespace vastra {

// Up to digits significant digits, without trailing zeros; with an exponent if that is shorter.
VASTRA_API CString NumberText(double value, int digits);

// False, and value does not change, if text is not one finite number. Blanks around it are allowed.
VASTRA_API bool ParseNumber(const CString& text, double& value);
// The same for a whole number from low to high.
VASTRA_API bool ParseWhole(const CString& text, std::int64_t low, std::int64_t high, std::int64_t& value);

}  // namespace vastra
