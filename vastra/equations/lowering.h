// The translation of one statement, from its lines to steps (steps.h). For CProgram.
#pragma once

#include <vector>

#include "vastra/equations/line_code.h"
#include "vastra/equations/places.h"
#include "vastra/equations/steps.h"

namespace vastra {

// A step whose function and distances are not looked up yet.
struct CDraft {
  static constexpr int kNoTarget = -1, kUndefined = -2;

  CStepKind kind;
  std::uint32_t a = 0, b = 0, c[2] = {0, 0}, d[2] = {0, 0}, to = 0;
  int target = kNoTarget;  // the step that it jumps to; kUndefined: what serves an undefined result
};

// Appends to steps those of one statement, which leave its result in the variable target. False, and nothing
// is appended, for lines that no parser makes, and for those that can be undefined and draw from rand too:
// how often they draw is up to the plain machine.
bool LowerStatement(const std::vector<CFlatLine>& lines, int target, CPlaces& places,
                    std::vector<CDraft>& steps);

}  // namespace vastra
