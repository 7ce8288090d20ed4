#include "vastra/equations/sub_coder.h"

#include "vastra/equations/opcodes.h"
#include "vastra/equations/scanner.h"

namespace vastra {
namespace {

POSITION Emit(int code, double op1 = 0.0, double op2 = 0.0) {
  return compileState.pRunLines->AddTail(CLineCode(code, op1, op2));
}

double Pop(CStack<double>* operands) {
  double operand = 0.0;
  operands->Pop(operand);
  return operand;
}

// Emit an operation that leaves its result on the run-time stack. The right operand is on top of operands.
void EmitUnary(int code, CStack<double>* operands) {
  Emit(code, Pop(operands));
  operands->Push(kStackOperand);
}
void EmitBinary(int code, CStack<double>* operands) {
  const double right = Pop(operands);
  Emit(code, right, Pop(operands));
  operands->Push(kStackOperand);
}

bool IsBetween(int code, int first, int last) { return code >= first && code <= last; }

// Emits the pending operator if it is one from first to last. Then pushes op as pending, unless at a tail.
void CodeLevel(int first, int last, int op, CStack<double>* operands, CStack<int>* operators, bool tail) {
  if (!operators->IsEmpty()) {
    int pending = 0;
    operators->Pop(pending);
    if (IsBetween(pending, first, last))
      EmitBinary(pending, operands);
    else
      operators->Push(pending);
  }
  if (!tail) operators->Push(op);
}

}  // namespace

void CSubCoder::Start() {
  compileState.nCount = 0;
  compileState.nEqIndex = 0;
  compileState.Text.Empty();
  compileState.Jumps.RemoveAll();  // a faulty statement can leave some
}

void CSubCoder::End(CStack<double>* operands, CStack<int>* operators) {
  operands->RemoveAll();
  operators->RemoveAll();
}

int CSubCoder::CodeFind(const CString& name) { return FindIn(*compileState.pVariableNames, name); }

void CSubCoder::CodeNewVar(const CString& name) {
  if (CodeFind(name) < 0) compileState.pVariableNames->Add(name);
}

void CSubCoder::CodeSingle(CStack<double>* operands) {
  if (operands->IsEmpty()) return;
  const double operand = Pop(operands);
  if (operand != kStackOperand) Emit(opPlus, operand);
  operands->Push(kStackOperand);
}

void CSubCoder::CodeSpecial(int op, CStack<double>* operands) {
  if (op == opPow) return EmitBinary(op, operands);
  if (op != opRand) return EmitUnary(op, operands);
  Emit(op);
  operands->Push(kStackOperand);
}

// The values of the condition and of each branch are on the run-time stack. A false condition jumps to the
// line after the end of the first branch; that end jumps to the line after the second branch.
void CSubCoder::CodeCondition(int kind, CStack<double>* operands) {
  CLineCodeList& lines = *compileState.pRunLines;
  POSITION waiting = nullptr;
  if (kind != tokenThen) compileState.Jumps.Pop(waiting);
  if (kind != 0) compileState.Jumps.Push(Emit(opNone));
  if (kind == tokenElse) lines.GetAt(waiting).Set(opJumpIfZero, kStackOperand, 0.0, lines.GetTailPosition());
  if (kind == 0) lines.GetAt(waiting).Set(opJump, 0.0, 0.0, lines.GetTailPosition());
  // The entry of the condition becomes the value of the whole conditional.
  if (kind != tokenThen) Pop(operands);
}

void CSubCoder::CodeMath(int op, CStack<double>* operands, CStack<int>* operators, bool tail) {
  const bool isSum = op <= opMinus;
  CodeLevel(isSum ? opPlus : opTimes, isSum ? opMinus : opModulo, op, operands, operators, tail);
}

void CSubCoder::CodeBol(int op, CStack<double>* operands, CStack<int>* operators, bool tail) {
  CodeLevel(opBitAnd, op, op, operands, operators, tail);
}

void CSubCoder::CodeCompare(CStack<double>* operands, CStack<int>* operators) {
  CodeLevel(opLess, opGreaterEqual, opNone, operands, operators, true);
}

// A pending minus is always the unary one here: a binary minus has been emitted before.
void CSubCoder::CodeEqual(CStack<double>* operands, CStack<int>* operators) {
  if (operators->IsEmpty()) return;
  int pending = 0;
  operators->Pop(pending);
  if (pending == opMinus || pending == opBitNot || pending == opLogicNot)
    EmitUnary(pending, operands);
  else if (pending == opEqual || pending == opNotEqual)
    EmitBinary(pending, operands);
  else
    operators->Push(pending);
}

}  // namespace vastra
