// Numbers as exported tables have them: the fewest digits that read back to the same float or double, plain
// up to twelve digits before the point and four zeros after it, else with an exponent ("1.5e+20"). "nan",
// "inf" or "-inf" for the others.
#pragma once

namespace vastra {

constexpr int kMaxShortestText = 32;

// Put the text of value at to and return the place after it. May write up to kMaxShortestText bytes.
char* PutShortest(char* to, float value);
char* PutShortest(char* to, double value);

}  // namespace vastra
