// The variables that a trend window or a scan grid shows, as a string. They are taken and set by the window's
// own buttons Save and Load, with a file that is removed afterwards.
#pragma once

#include "vastra/ui/window.h"

namespace vastra {

// Empty: the window cannot be used now.
CString SelectionOf(const CWnd& view);
// Returns the text of the box that the window would have shown; empty: none.
CString Select(const CWnd& view, const CString& selection);

}  // namespace vastra
