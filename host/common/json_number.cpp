#include "host/common/json_number.h"

#include <cmath>
#include <cstring>
#include <string_view>

namespace vastra {
namespace {

// Readers of JSON take -0 for a whole number, which has no sign then.
constexpr std::string_view kNegativeZero = "-0.0";

template <class TNumber>
char* PutNumber(char* to, TNumber number) {
  if (number == 0 && std::signbit(number)) {
    std::memcpy(to, kNegativeZero.data(), kNegativeZero.size());
    return to + kNegativeZero.size();
  }
  if (std::isfinite(number)) return PutShortest(to, number);
  *to = '"';
  to = PutShortest(to + 1, number);
  *to = '"';
  return to + 1;
}

}  // namespace

char* PutJsonNumber(char* to, float number) { return PutNumber(to, number); }
char* PutJsonNumber(char* to, double number) { return PutNumber(to, number); }

}  // namespace vastra
