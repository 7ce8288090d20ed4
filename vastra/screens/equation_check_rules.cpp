#include "vastra/screens/equation_check_rules.h"

#include "vastra/equations/equator.h"
#include "vastra/equations/separator.h"

namespace vastra {

CTextFault CheckEquations(const CString& text, const CStringArray& varNames, CStringArray& equations) {
  CStringArray targets;
  CArray<int, int> positions;
  equations.RemoveAll();
  CEquationSeparator().Separate(text, equations, targets, positions);
  const CEquationFault fault = CEquator().Compile(varNames, equations);
  if (!fault.statement) return {};
  return {fault.statement, positions[fault.statement - 1] + fault.offset};
}

}  // namespace vastra
