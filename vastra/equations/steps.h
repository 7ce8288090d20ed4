// The steps that statements are lowered to. Variables, literals and temporaries are in one register file of
// doubles, and an operand is an index into it. The result of the last step is in the accumulator, which is
// passed from step to step in a processor register.
//
// Each kind of step is a small function that ends with a tail call of the next one. If the compiler does not
// guarantee tail calls, the same functions return the next step to a loop.
#pragma once

#include <cstdint>

namespace vastra {

using CHandler = void (*)();  // steps.cpp casts it to its real type

struct CStep {
  CHandler run;
  std::uint32_t a, b, c[2], d[2];  // places of operands
  std::uint32_t to;                // place of the result
  std::int32_t jump;               // distance from this step to the next one if it jumps
};

// Whether the right operand (a) or the left one (b) of an operation is in the accumulator.
enum class ESource { fromRegisters, rightAccumulator, leftAccumulator };

// The destination of a result. A variable rounds it to float.
enum class EResult { toAccumulator, toTemporary, toVariable };

// Comparisons are <, <=, == and !=: > and >= are < and <= with exchanged sides.
enum class EFamily {
  operation,  // the operation code; jumps if it is undefined
  chain,      // code (+ - *) on a and b; then outer (+ - *, or / by c[0]) on the result and c[0]
  pair,       // outer on the results of code on a and b (left) and second on c[0] and c[1] (right); all + - *
  logic,      // outer (&& ||) on the accumulator and the comparison code of a and b
  logicPair,  // outer (&& ||) on the comparisons code of a and b and second of c[0] and c[1]
  select,     // c[1] + d[1] if the comparison code holds, else c[0] + d[0]
  test,       // jumps unless the comparison code holds
  copy,       // copies a
  jump,       // jumps
  stop,       // ends RunSteps, which returns it
};

struct CStepKind {
  EFamily family = EFamily::stop;
  int code = 0;
  ESource source = ESource::fromRegisters;  // of code; in a chain of outer: if not fromRegisters, the
                                            // accumulator replaces c[0]
  EResult result = EResult::toAccumulator;
  int outer = 0;
  bool isInnerRight = false;  // in a chain: the result of code is the right operand of outer
  int second = 0;             // in a pair or logicPair
};

// The function of a kind of step; null if there is no such kind.
CHandler FindHandler(const CStepKind& kind);

// Whether a code is allowed in the families that accept only some.
bool IsComparison(int code);
bool IsChainable(int code);

// Runs from step to the next stop and returns it.
const CStep* RunSteps(const CStep* step, double* registers);

}  // namespace vastra
