// Numbers as exported tables have them: the fewest digits that read back to the same float or double, plain
// up to twelve digits before the point and four zeros after it, else with an exponent ("1.5e+20"). "nan",
// "inf" or "-inf" for the others.
#pragma once

#include "vastra/platform/api.h"

namespace vastra {

constexpr int kMaxShortestText = 32;

// Put the text of value at to and return the place after it. May write up to kMaxShortestText bytes.
VASTRA_API char* PutShortest(char* to, float value);
VASTRA_API char* PutShortest(char* to, double value);

}  // namespace vastra
