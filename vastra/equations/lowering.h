// Translates the lines of one statement to steps (steps.h). Called by CProgram.
#pragma once

#include <vector>

#include "vastra/equations/line_code.h"
#include "vastra/equations/places.h"
#include "vastra/equations/steps.h"

namespace vastra {

// A step before its function and its jump distance are known.
struct CDraft {
  static constexpr int kNoTarget = -1, kUndefined = -2;

  CStepKind kind;
  std::uint32_t a = 0, b = 0, c[2] = {0, 0}, d[2] = {0, 0}, to = 0;
  int target = kNoTarget;  // the step that it jumps to; kUndefined: the stop for an undefined result
};

// Appends the steps of one statement, which store its result in the variable target. Returns false and
// appends nothing for lines that the parser cannot produce, and for a statement that can be undefined and
// calls rand: only the reference interpreter makes all its calls of rand.
bool LowerStatement(const std::vector<CFlatLine>& lines, int target, CPlaces& places,
                    std::vector<CDraft>& steps);

}  // namespace vastra
