// CExecutionStruct: one compiled statement as a list of lines, and the reference interpreter that runs it.
//
// The reference interpreter defines the language. It runs any list, even one that the parser cannot produce.
// Statements that run for every sample have a faster form with bit-identical results (program.h).
#pragma once

#include <limits>
#include <memory>

#include "vastra/equations/line_code.h"
#include "vastra/equations/opcodes.h"
#include "vastra/equations/stack.h"
#include "vastra/platform/array.h"

namespace vastra {

// The result of an undefined statement. As a float it is plus infinity.
constexpr double kUndefinedResult = std::numeric_limits<double>::max();

// Owns its lines. Moving it does not move the lines in memory.
class VASTRA_API CExecutionStruct : public CObject {
 public:
  CExecutionStruct() : m_pLines(std::make_unique<CLineCodeList>()) {}

  // The compiled form; the parser fills it.
  CLineCodeList* GetHead() { return m_pLines.get(); }
  const CLineCodeList* GetHead() const { return m_pLines.get(); }

  // Runs the lines. Variable i is element i of values; a missing element is 0.0.
  // Returns 1 and sets result to the value, or returns 0 and sets it to kUndefinedResult.
  // Without values returns 0 and does not change result; a list that leaves no value does not change it
  // either.
  int Execute(CArray<float, float>* values, double& result) const;

 private:
  std::unique_ptr<CLineCodeList> m_pLines;
};

// The reference interpreter. variable(i) returns the value of variable i, for any int. stack must be empty.
// Returns as Execute. All lines run, even after an undefined operation, which pushes no value: their calls of
// rand count.
template <class Variable>
int RunLines(const CLineCodeList& lines, Variable variable, CStack<double>& stack, double& result) {
  bool isDefined = true;
  const auto resolve = [&](double operand) {
    if (IsLiteral(operand)) return operand;
    if (operand != kStackOperand) return static_cast<double>(variable(OperandIndex(operand)));
    stack.Pop(operand);
    return operand;
  };
  for (POSITION pos = lines.GetHeadPosition(); pos;) {
    int code;
    double op1, op2;
    POSITION jump;
    lines.GetNext(pos).Get(code, op1, op2, jump);
    op1 = resolve(op1);
    op2 = resolve(op2);
    if (code == opJump || (code == opJumpIfZero && op1 == 0.0)) {
      pos = jump;
      if (pos) lines.GetNext(pos);
      continue;
    }
    const COpcode* opcode = FindOpcode(code);
    if (!opcode || !opcode->compute) continue;
    double value;
    if (opcode->compute(op1, op2, value))
      stack.Push(value);
    else
      isDefined = false;
  }
  if (isDefined)
    stack.Pop(result);
  else
    result = kUndefinedResult;
  return isDefined;
}

}  // namespace vastra
