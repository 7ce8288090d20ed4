// What the command does without memory: one line, and status 1. An allocation can fail before main, in a
// thread, and where an exception has no memory; nothing here needs any.
#pragma once

#include "host/cli/exit.h"

namespace vastra {

// Prints the line and returns kFailed.
EExit FailMemory();

}  // namespace vastra
