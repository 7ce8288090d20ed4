// What the dialogs of a log output and of a summary propose and check; CItemDlg and COutputNodeDlg call it.
#pragma once

#include "vastra/config/output_config.h"
#include "vastra/config/summary_config.h"

namespace vastra {

// The message about the first fault, in the order of the checks; null: no fault.
VASTRA_API const char* FirstFault(const COutputConfig& output);
VASTRA_API const char* FirstFault(const CSummaryConfig& summary);

// The text of enable equations that the editor proposes for an item without any.
VASTRA_API CString ProposedEnableText(const COutputConfig& output);
VASTRA_API CString ProposedEnableText(const CSummaryConfig& summary);

// What the names of logs can be based on: the time, or a variable.
struct CNameBasis {
  CStringArray offered;  // the time first
  int selected = 0;
};
// names: the available variables; null: not known. Then the stored variable is offered and selected, so that
// the dialog keeps it.
VASTRA_API CNameBasis NameBasis(const CStringArray* names, const CString& stored);
// Whether the variable after basis can be part of the names.
VASTRA_API bool CanJoinNext(const CString& basis);

}  // namespace vastra
