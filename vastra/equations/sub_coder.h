// CSubCoder: the code generator of the equation language. The grammar calls it at fixed points while it
// reads a statement from left to right; no tree is built. Operands that no line has taken yet and operators
// that wait for their right side stand on two stacks, code goes to compileState.pRunLines.
#pragma once

#include "vastra/equations/line_code.h"
#include "vastra/platform/array.h"

namespace vastra {

template <class T>
class CStack;

// Pending operators below it belong to what surrounds a bracket.
constexpr int markerOpen = 1001;

class CSubCoder : public CObject {
 public:
  void Start();  // a new statement
  void End(CStack<double>* operands, CStack<int>* operators);

  // Index of a known name, or -1.
  int CodeFind(const CString& name);
  // Makes name known, if it is not.
  void CodeNewVar(const CString& name);

  // The value on top of operands goes to the run-time stack, if it is not there.
  void CodeSingle(CStack<double>* operands);
  // The function op is complete.
  void CodeSpecial(int op, CStack<double>* operands);
  // kind tokenThen: a first branch begins; tokenElse: the second one; 0: the conditional is complete.
  void CodeCondition(int kind, CStack<double>* operands);
  // A binary operator was read; or, with tail, its side is complete. A pending operator that binds at least
  // as tightly becomes code first, which makes these operators associate to the left.
  void CodeMath(int op, CStack<double>* operands, CStack<int>* operators, bool tail);
  void CodeBol(int op, CStack<double>* operands, CStack<int>* operators, bool tail);
  // A comparison is complete.
  void CodeCompare(CStack<double>* operands, CStack<int>* operators);
  // A unary operator, or the right side of an equality, is complete.
  void CodeEqual(CStack<double>* operands, CStack<int>* operators);
};

}  // namespace vastra
