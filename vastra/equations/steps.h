// The steps into which statements are lowered for running. Variables, literals and temporaries stand in one
// file of doubles, an operand is a place in it, and the value that the last step made is handed from step to
// step in a register.
//
// Each kind of step is one small function that does its work and calls the next one at its very end. Where
// the compiler does not promise that such a call leaves nothing behind on the stack, the same functions
// return the next step to a loop instead.
#pragma once

#include <cstdint>

namespace vastra {

using CHandler = void (*)();  // steps.cpp knows what it takes and gives

struct CStep {
  CHandler run;
  std::uint32_t a, b, c, d;  // places of operands
  std::uint32_t to;          // place of the result
  std::int32_t jump;         // from this step to the one that follows if it jumps
};

// Where a step takes its right (a) and left (b) operand.
enum class CSource { fromFile, rightRunning, leftRunning };
constexpr int kSources = 3;

// What becomes of its result. A variable rounds it to float, keeps the float and widens it again.
enum class CResult { toRunning, toTemporary, toVariable };
constexpr int kResults = 3;

enum class CFamily {
  operation,  // code on a and b
  chain,      // code on a and b, then outer on that and c; see CStepKind
  logic,      // outer, && or ||, on the running value and the comparison code of a and b
  select,     // c if the comparison code holds for a and b, else d
  selectSum,  // the same plus 0.0
  test,       // jumps unless the comparison code holds for a and b
  testZero,   // jumps if a is 0
  copy,       // a
  jump,       // jumps
  stop,       // gives itself to who runs the steps
};

struct CStepKind {
  CFamily family = CFamily::stop;
  int code = 0;
  CSource source = CSource::fromFile;  // in a chain: not fromFile, then c is the running value
  CResult result = CResult::toRunning;
  int outer = 0;
  bool isInnerRight = false;  // the inner result is the right operand of outer
};

// The function for a kind of step. Null: there is none; what there is for which code the families say.
CHandler FindHandler(const CStepKind& kind);

// Which codes the families other than operation have.
bool IsComparison(int code);  // < > <= >= == !=
bool IsChainable(int code);   // + - *

// Runs from step on to a stop, and gives that. file: the doubles; values: the variables as floats.
const CStep* RunSteps(const CStep* step, double* file, float* values);

}  // namespace vastra
