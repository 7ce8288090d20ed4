// What the dialogs of a log output and of a summary propose and check, without a window.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/config/summary_config.h"

namespace vastra {

// What the user is told of the first fault, by the order of the checks; null: there is none.
VASTRA_API const char* FirstFault(const COutputConfig& output);
VASTRA_API const char* FirstFault(const CSummaryConfig& summary);

// The enable equations that a user who has none begins with.
VASTRA_API CString ProposedEnableText(const COutputConfig& output);
VASTRA_API CString ProposedEnableText(const CSummaryConfig& summary);

// What logs can be named by: the time, or a variable.
struct CNameBasis {
  CStringArray offered;  // the time first
  int selected = 0;
};
// names: the variables there are; null when they are not known. Then a variable that is stored stays offered
// and selected, so that the dialog does not lose it.
VASTRA_API CNameBasis NameBasis(const CStringArray* names, const CString& stored);
// Whether the variable behind basis can join in the names.
VASTRA_API bool CanJoinNext(const CString& basis);

}  // namespace vastra
