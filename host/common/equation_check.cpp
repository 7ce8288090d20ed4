#include "host/common/equation_check.h"

#include "host/common/equation_lists.h"
#include "vastra/equations/equator.h"

namespace vastra {

std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names) {
  std::vector<CEquationFinding> findings;
  for (const CEquationList& list : EquationLists(configuration, names)) {
    const CEquationFault fault = CEquator().Compile(list.Names(), list.equations);
    if (fault.statement == 0) continue;
    CString place;
    place.Format(": statement %d, offset %d: ", fault.statement, fault.offset);
    const CString name = list.userName.IsEmpty() ? CString() : " (\"" + list.userName + "\")";
    findings.push_back(
        {list.Key() + name + place + fault.text, list.equations[fault.statement - 1], fault.offset});
  }
  return findings;
}

}  // namespace vastra
