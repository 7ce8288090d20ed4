#include "vastra/equations/parser.h"

#include <ctime>
#include <utility>

#include "vastra/equations/compile_state.h"
#include "vastra/equations/random.h"

int equationparse();  // made from grammar.y; 0: accepted

namespace vastra {

CParser::CParser() { SeedRandom(static_cast<unsigned>(std::time(nullptr))); }

int CParser::Parse(CString equation, CLineCodeList* code, CStringArray* names) {
  if (!code || !names) return 0;
  compileState.ParsingEq = std::move(equation) + ';';
  compileState.pRunLines = code;
  compileState.pVariableNames = names;
  compileState.nTarget = -1;
  const bool accepted = equationparse() == 0;
  m_nLastError = compileState.nCount;
  m_nTarget = compileState.nTarget;
  return accepted;
}

void yyerror(const char*) {
  compileState.nCount -= compileState.Text.GetLength();
  compileState.PreParser.End(&compileState.Operands, &compileState.Operators);
}

}  // namespace vastra
