// The state of a compile: scanner, grammar and code generator work on it together. Each thread has its own,
// so that two threads can compile at once.
#pragma once

#include "vastra/equations/stack.h"
#include "vastra/equations/sub_coder.h"

namespace vastra {

struct CCompileState {
  // Of the scanner.
  CString ParsingEq;  // the statement, with its ";"
  int nEqIndex = 0;   // the next byte to scan
  CString Text;       // what was matched last: a token, white space or a comment
  int nCount = 0;     // how many bytes were matched; after a failed parse where the bad token starts
  double dValue = 0;  // of the number matched last
  // After a failed parse what the parser reported; "" for a name that is not known.
  const char* pFault = nullptr;

  // Of the code generator.
  CStack<double> Operands;  // operands that no line of code has taken yet
  CStack<int> Operators;    // operators that wait for their right side, and markerOpen for each open bracket
  CStack<POSITION> Jumps;   // lines that wait for the target of their jump
  CSubCoder PreParser;
  CLineCodeList* pRunLines = nullptr;      // receives the code
  CStringArray* pVariableNames = nullptr;  // what is known; receives the assigned name
  int nInt = 0;                            // index of the name matched last
  int nTarget = -1;                        // index of the name that the statement assigns
};

extern thread_local CCompileState compileState;

// Takes nCount back to the start of the token matched last, and gives up what was pending.
void yyerror(const char* message);

}  // namespace vastra
