#include "vastra/screens/equation_check_rules.h"

#include "vastra/equations/parser.h"
#include "vastra/equations/separator.h"

namespace vastra {

CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations) {
  CStringArray targets;
  CArray<int, int> positions;
  equations.RemoveAll();
  CEquationSeparator().Separate(text, equations, targets, positions);
  CStringArray known = varNames;
  for (const CString& target : targets)
    if (FindIn(known, target) < 0) known.Add(target);
  CParser parser;
  CLineCodeList scratch;
  for (int i = 0; i < equations.GetSize(); ++i)
    if (!parser.Parse(equations[i], &scratch, &known)) return {i + 1, positions[i] + parser.GetLastError()};
  return {};
}

}  // namespace vastra
