// The JSON that commands print: one line, keys in the order in which they were added, U+FFFD for bytes that
// are not UTF-8.
#pragma once

#include "host/cli/exit.h"
#include "host/common/json_text.h"
#include "vastra/platform/string.h"
#include "vastra/platform/time.h"

namespace vastra {

// A number that reads back to the same double; the strings "inf", "-inf" and "nan" for what JSON cannot
// represent.
CJson ToJson(double number);
inline CJson ToJson(const CString& text) { return text.Std(); }
// A time record as [time, millitm, timezone, dstflag].
inline CJson ToJson(const _timeb& time) { return {time.time, time.millitm, time.timezone, time.dstflag}; }

EExit PrintJson(const CJson& json);

}  // namespace vastra
