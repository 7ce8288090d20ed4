#include "vastra/screens/item_rules.h"

#include <algorithm>

#include "vastra/stages/single_enable.h"

namespace vastra {
namespace {

template <class TConfig>
const char* FirstCommonFault(const TConfig& item, const char* noVariables) {
  if (item.m_name.IsEmpty()) return "Wrong Configuration!!\n You must give a name";
  if (item.m_directory.IsEmpty()) return "Wrong Configuration!!\n You must select a destination path";
  if (item.m_enableEquations.IsEmpty())
    return "Wrong Configuration!!\n To write logs you must enter the basic enable equations at least";
  return item.m_varNames.IsEmpty() ? noVariables : nullptr;
}

const char* FirstNamingFault(const COutputConfig& output) {
  if (output.m_nameVariable == kSystemTime)
    return output.m_usePrefix && output.m_prefix.IsEmpty()
               ? "WrongConfiguration!!\nYou selected to use a prefix, please type the prefix to be used"
               : nullptr;
  return FindIn(output.m_varNames, output.m_nameVariable) < 0
             ? "WrongConfiguration!!\n"
               "The selected variable for the log names must be included in the logged variables"
             : nullptr;
}

CString Proposed(const char* const (&flags)[3]) {
  CString text;
  text.Format("/*Replace with your equations*/\r\n%s= 1; \r\n%s= 1; \r\n%s= 0;", flags[0], flags[1],
              flags[2]);
  return text;
}

}  // namespace

const char* FirstFault(const COutputConfig& output) {
  const char* fault = FirstCommonFault(
      output, "Wrong Configuration!!\n To write logs you must select at least 1 output variable");
  return fault ? fault : FirstNamingFault(output);
}

const char* FirstFault(const CSummaryConfig& summary) {
  return FirstCommonFault(
      summary, "Wrong Configuration!!\n To write summary you must enter at least 1 output variable");
}

CString ProposedEnableText(const COutputConfig&) { return Proposed(kLogFlags); }

CString ProposedEnableText(const CSummaryConfig&) { return Proposed(kSummaryFlags); }

CNameBasis NameBasis(const CStringArray* names, const CString& stored) {
  CNameBasis basis;
  basis.offered.Add(kSystemTime);
  if (names)
    basis.offered.Append(*names);
  else if (!stored.IsEmpty() && CanJoinNext(stored))
    basis.offered.Add(stored);
  basis.selected = std::max(0, FindIn(basis.offered, stored));
  return basis;
}

bool CanJoinNext(const CString& basis) { return !(basis == kSystemTime); }

}  // namespace vastra
