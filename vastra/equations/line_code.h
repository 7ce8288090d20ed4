// CLineCode: one instruction of a compiled statement. The parser makes a list of them, tools print it, and
// the reference interpreter runs it.
//
// An operand is a double with one of three meanings: 0.0 or above is a literal, -1.0 is the value on top of
// the stack, and -(i + 2) is the variable with index i.
#pragma once

#include <vector>

#include "vastra/platform/list.h"
#include "vastra/platform/object.h"

namespace vastra {

class VASTRA_API CLineCode : public CObject {
 public:
  CLineCode() = default;
  CLineCode(int code, double op1, double op2) : m_code(code), m_op1(op1), m_op2(op2) {}

  // op1 is the right operand, or the only one; op2 is the left operand. jump is a position in the list of
  // this line: a jump continues at the line after it.
  void Set(int code, double op1, double op2, POSITION jump) {
    m_jump = jump, m_code = code, m_op1 = op1, m_op2 = op2;
  }
  void Get(int& code, double& op1, double& op2, POSITION& jump) const {
    code = m_code, op1 = m_op1, op2 = m_op2, jump = m_jump;
  }

 private:
  POSITION m_jump = nullptr;
  int m_code = 0;
  double m_op1 = 0.0;
  double m_op2 = 0.0;
};

using CLineCodeList = CList<CLineCode, CLineCode>;

constexpr double kStackOperand = -1.0;
constexpr double VariableOperand(int index) { return -(index + 2.0); }
constexpr bool IsLiteral(double operand) { return operand >= 0.0; }

// The index in an operand that is neither a literal nor the stack; -1 if it does not fit an int.
constexpr int OperandIndex(double operand) {
  const double index = -operand - 2.0;
  return index > -1.0 && index < 2147483647.0 ? static_cast<int>(index) : -1;
}

// One line, with its jump as an index.
struct CFlatLine {
  int code;
  double op1, op2;
  int jump;  // index of the target in the list, from 0; -1: none
};

// The lines of a list in order.
VASTRA_API std::vector<CFlatLine> FlatLines(const CLineCodeList& lines);

}  // namespace vastra
