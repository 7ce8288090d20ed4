// CSubCoder: the code generator of the equation language. The grammar calls it at fixed points while it reads
// a statement from left to right, without a syntax tree. Two stacks have the operands that no line uses yet
// and the operators whose right side is not complete. The code is added to compileState.pRunLines.
#pragma once

#include "vastra/equations/line_code.h"
#include "vastra/platform/array.h"

namespace vastra {

template <class T>
class CStack;

// The marker of an open bracket: pending operators below it are outside the bracket.
constexpr int markerOpen = 1001;

class CSubCoder : public CObject {
 public:
  void Start();  // a new statement
  void End(CStack<double>* operands, CStack<int>* operators);

  // The index of a known name, or -1.
  int CodeFind(const CString& name);
  // Adds name to the known names if it is not one.
  void CodeNewVar(const CString& name);

  // Moves the value on top of operands to the run-time stack, if it is not there.
  void CodeSingle(CStack<double>* operands);
  // Called when the function op is complete.
  void CodeSpecial(int op, CStack<double>* operands);
  // Called for kind tokenThen when the first branch begins, for tokenElse when the second branch begins, and
  // for 0 when the conditional is complete.
  void CodeCondition(int kind, CStack<double>* operands);
  // Called after a binary operator; or, with tail, when its right side is complete. First emits a pending
  // operator that binds at least as tightly, so that these operators associate to the left.
  void CodeMath(int op, CStack<double>* operands, CStack<int>* operators, bool tail);
  void CodeBol(int op, CStack<double>* operands, CStack<int>* operators, bool tail);
  // Called when a comparison is complete.
  void CodeCompare(CStack<double>* operands, CStack<int>* operators);
  // Called when the operand of a unary operator or the right side of an equality is complete.
  void CodeEqual(CStack<double>* operands, CStack<int>* operators);
};

}  // namespace vastra
