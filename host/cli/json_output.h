// The JSON that commands print: one line, keys in the order in which they were put, texts that are no UTF-8
// with U+FFFD for what is wrong in them.
#pragma once

#include "host/cli/exit.h"
#include "host/common/json_text.h"
#include "vastra/platform/string.h"

namespace vastra {

// A number that reads back to the same double; "inf", "-inf" and "nan" for those that JSON lacks.
CJson ToJson(double number);
inline CJson ToJson(const CString& text) { return text.Std(); }

EExit PrintJson(const CJson& json);

}  // namespace vastra
