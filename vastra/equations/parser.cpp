#include "vastra/equations/parser.h"

#include <cstring>
#include <ctime>
#include <utility>

#include "vastra/equations/compile_state.h"
#include "vastra/equations/random.h"
#include "vastra/equations/scanner.h"

int equationparse();  // generated from grammar.y; returns 0 if the statement is accepted

namespace vastra {
namespace {

// The message for the user for a fault that bison or the grammar reports.
const char* FaultText(const char* reported) {
  if (!*reported) return "a name that nothing assigns";
  if (std::strcmp(reported, "memory exhausted") == 0) return "nested too deeply";
  return "no statement of the language";
}

}  // namespace

CParser::CParser() { SeedRandom(static_cast<unsigned>(std::time(nullptr))); }

int CParser::Parse(CString equation, CLineCodeList* code, CStringArray* names) {
  if (!code || !names) return 0;
  compileState.ParsingEq = std::move(equation) + ';';
  compileState.pRunLines = code;
  compileState.pVariableNames = names;
  compileState.nTarget = -1;
  const bool accepted = equationparse() == 0;
  m_nLastError = compileState.nCount;
  m_lastFault = accepted ? "" : FaultText(compileState.pFault);
  m_nTarget = compileState.nTarget;
  m_isUnknownName = !accepted && !*compileState.pFault;
  return accepted;
}

bool IsVariableName(const CString& name) {
  compileState.ParsingEq = name;
  compileState.nEqIndex = compileState.nCount = 0;
  const bool isName = yylex() == tokenName && compileState.Text == name;
  compileState.nEqIndex = compileState.nCount = 0;
  return isName;
}

void yyerror(const char* message) {
  compileState.pFault = message;
  compileState.nCount -= compileState.Text.GetLength();
  compileState.PreParser.End(&compileState.Operands, &compileState.Operators);
}

}  // namespace vastra
