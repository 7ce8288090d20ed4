// The state of a compilation, shared by scanner, grammar and code generator. Each thread has its own, so that
// several threads can compile at the same time.
#pragma once

#include "vastra/equations/stack.h"
#include "vastra/equations/sub_coder.h"

namespace vastra {

struct CCompileState {
  // Scanner.
  CString ParsingEq;  // the statement, with its ";"
  int nEqIndex = 0;   // the next byte to scan
  CString Text;       // the last match: a token, white space or a comment
  int nCount = 0;     // how many bytes were matched; after a failed parse the start of the bad token
  double dValue = 0;  // the value of the last number matched
  // After a failed parse the parser's message; "" for an unknown name.
  const char* pFault = nullptr;

  // Code generator.
  CStack<double> Operands;  // operands that no line of code has used yet
  CStack<int> Operators;   // operators whose right side is not complete, and markerOpen for each open bracket
  CStack<POSITION> Jumps;  // lines whose jump has no target yet
  CSubCoder PreParser;
  CLineCodeList* pRunLines = nullptr;      // receives the code
  CStringArray* pVariableNames = nullptr;  // the known names; receives the assigned name
  int nInt = 0;                            // index of the last name matched
  int nTarget = -1;                        // index of the name that the statement assigns
};

extern thread_local CCompileState compileState;

// Sets nCount to the start of the last token and clears the stacks of operands and operators.
void yyerror(const char* message);

}  // namespace vastra
