// CExecutionStruct: one compiled statement, as the list of its lines, and the plain machine that runs it.
//
// The plain machine takes any list, also one that no parser made, and is what the language means. A list of
// statements that runs for every sample does so in another form that gives the same bits (program.h).
#pragma once

#include <limits>
#include <memory>

#include "vastra/equations/line_code.h"
#include "vastra/equations/opcodes.h"
#include "vastra/equations/stack.h"
#include "vastra/platform/array.h"

namespace vastra {

// What an undefined statement gives. As a float it is plus infinity.
constexpr double kUndefinedResult = std::numeric_limits<double>::max();

// Owns its lines; it can be moved, and the lines stay where they are.
class VASTRA_API CExecutionStruct : public CObject {
 public:
  CExecutionStruct() : m_pLines(std::make_unique<CLineCodeList>()) {}

  // The compiled form; the parser fills it.
  CLineCodeList* GetHead() { return m_pLines.get(); }
  const CLineCodeList* GetHead() const { return m_pLines.get(); }

  // Runs the lines on values, where variable i is element i; one that is not there reads 0.0.
  // 1: result is the value. 0: it is undefined, and result is kUndefinedResult.
  // 0 also without values; result then stays as it was, as it does after a list that leaves no value.
  int Execute(CArray<float, float>* values, double& result) const;

 private:
  std::unique_ptr<CLineCodeList> m_pLines;
};

// The plain machine. variable(i) gives the value of variable i, for any int; stack must be empty and is used.
// Results as those of Execute. All lines run even after an undefined operation, which pushes nothing: what
// they draw from rand counts.
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
