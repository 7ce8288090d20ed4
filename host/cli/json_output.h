// The JSON that commands print: one line, keys in the order in which they were added, U+FFFD for bytes that
// are not UTF-8.
#pragma once

#include "host/cli/exit.h"
#include "host/common/json_text.h"

namespace vastra {

EExit PrintJson(const CJson& json);

}  // namespace vastra
