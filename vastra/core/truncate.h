// TruncateToInt: the one way in which a value becomes a signed 32-bit integer, for flags and names of logs.
#pragma once

#include <climits>

namespace vastra {

// value cut towards zero; the smallest integer for what does not fit, NaN among it.
inline int TruncateToInt(double value) {
  return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : INT_MIN;
}

}  // namespace vastra
