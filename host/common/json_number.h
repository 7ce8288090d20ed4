// The values of samples as JSON text: the fewest digits that read back to the same float or double; the
// strings "nan", "inf" and "-inf" for what JSON cannot represent.
#pragma once

#include "vastra/history/float_text.h"

namespace vastra {

constexpr int kMaxJsonNumber = kMaxShortestText + 2;

// Put the text of number at to and return the place after it. May write up to kMaxJsonNumber bytes.
char* PutJsonNumber(char* to, float number);
char* PutJsonNumber(char* to, double number);

}  // namespace vastra
