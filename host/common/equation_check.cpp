#include "host/common/equation_check.h"

#include "host/common/equation_lists.h"
#include "host/common/name_set.h"

namespace vastra {
namespace {

// The name at offset in statement.
CString NameAt(const CString& statement, int offset) {
  constexpr const char* kNameBytes = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
  const std::string_view rest = statement.View().substr(static_cast<std::size_t>(offset));
  return CString(rest.substr(0, rest.find_first_not_of(kNameBytes)));
}

}  // namespace

CString EquationFaultText(const CEquationFault& fault, const CStringArray& names,
                          const CStringArray& equations) {
  if (!fault.isUnknownName) return fault.text;
  const CStringArray assigned = AssignedNames(equations);
  CNameSet known(names);
  known.Add(assigned);
  const CString name = NameAt(equations[fault.statement - 1], fault.offset);
  return NoVariable(name, CNearestName().Find(name, known));
}

CString CEquationFinding::Line() const {
  CString place;
  place.Format(": statement %d, offset %d: ", number, offset);
  return key + (owner.IsEmpty() ? CString() : " (\"" + owner + "\")") + place + text;
}

std::vector<CEquationFinding> FindEquationFaults(const CConfiguration& configuration,
                                                 const CStageNames& names) {
  std::vector<CEquationFinding> findings;
  for (const CEquationList& list : EquationLists(configuration, names)) {
    const CEquationFault fault = CEquator().Compile(list.Names(), list.equations);
    if (fault.statement == 0) continue;
    findings.push_back({list.Key(), list.userName, fault.statement, list.equations[fault.statement - 1],
                        fault.offset, EquationFaultText(fault, list.Names(), list.equations)});
  }
  return findings;
}

}  // namespace vastra
