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
  std::uint32_t a, b, c[2], d[2];  // places of operands
  std::uint32_t to;                // place of the result
  std::int32_t jump;               // from this step to the one that follows if it jumps
};

// Where an operation on a (right) and b (left) finds one of them: in its place or in the register.
enum class CSource { fromFile, rightRunning, leftRunning };

// What becomes of a result. A variable rounds it to float.
enum class CResult { toRunning, toTemporary, toVariable };

// Comparisons are < <= == != alone: > and >= are < and <= with their sides changed.
enum class CFamily {
  operation,  // the operation code; jumps if it is undefined
  chain,      // code, one of + - *, on a and b; then outer, the same or / by c[0], on that and c[0]
  pair,       // outer on what code gives of a and b (left) and second of c[0] and c[1] (right), all of + - *
  logic,      // outer, && or ||, on the running value and the comparison code of a and b
  logicPair,  // the same on the comparisons code of a and b and second of c[0] and c[1]
  select,     // c[1] + d[1] if the comparison code holds, else c[0] + d[0]
  test,       // jumps unless the comparison code holds
  copy,       // a
  jump,       // jumps
  stop,       // gives itself to who runs the steps
};

struct CStepKind {
  CFamily family = CFamily::stop;
  int code = 0;
  CSource source =
      CSource::fromFile;  // of code; in a chain of outer: if not fromFile, c[0] is the running value
  CResult result = CResult::toRunning;
  int outer = 0;
  bool isInnerRight = false;  // in a chain: what code gives is the right operand of outer
  int second = 0;             // in a pair
};

// The function for a kind of step; null if there is no such kind.
CHandler FindHandler(const CStepKind& kind);

// Which codes there are for the families that do not have all.
bool IsComparison(int code);
bool IsChainable(int code);

// Runs from step on to a stop, and gives that.
const CStep* RunSteps(const CStep* step, double* file);

}  // namespace vastra
