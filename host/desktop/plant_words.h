// Words and numbers of the rows about the plant.
#pragma once

#include <chrono>

#include "vastra/platform/string.h"
#include "vastra/platform/time.h"

namespace vastra {

// A text of a device, a user or the system in one line that is not too long for a row.
CString ShortText(const CString& text);
// ": REASON", or nothing without a reason.
CString Because(const CString& reason);
CString NumberText(std::uint64_t number);
// Adds entry, unless it is empty, with a comma before it.
void AppendItem(CString& list, const CString& entry);

// "now", "12 s", "3 min 20 s", "2 h 10 min", "3 d 4 h".
CString AgeText(std::chrono::seconds age);
// Local: "13:01:10", with the date if it is not that of now.
CString ClockText(const _timeb& time, const _timeb& now);

}  // namespace vastra
