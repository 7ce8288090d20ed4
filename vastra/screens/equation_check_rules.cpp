#include "vastra/screens/equation_check_rules.h"

#include "vastra/equations/parser.h"
#include "vastra/equations/separator.h"

namespace vastra {

CTextFault CheckStatements(const CStringArray& equations, const CStringArray& varNames) {
  CStringArray known = varNames;
  for (const CString& equation : equations)
    if (const CString target = TargetName(equation); FindIn(known, target) < 0) known.Add(target);
  CParser parser;
  CLineCodeList scratch;
  for (int i = 0; i < equations.GetSize(); ++i)
    if (!parser.Parse(equations[i], &scratch, &known)) return {i + 1, parser.GetLastError()};
  return {};
}

CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations) {
  CStringArray targets;
  CArray<int, int> positions;
  equations.RemoveAll();
  CEquationSeparator().Separate(text, equations, targets, positions);
  CTextFault fault = CheckStatements(equations, varNames);
  if (fault.statement) fault.offset += positions[fault.statement - 1];
  return fault;
}

CString TargetName(const CString& equation) {
  CString name;
  FindAssignedName(equation, name);
  return name;
}

}  // namespace vastra
