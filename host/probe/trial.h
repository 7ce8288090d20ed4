// The driver's side of the contract test: the rules, and the process in which they are tried. contract.cpp
// starts the process and reads its lines.
#pragma once

#include "host/probe/contract.h"

namespace vastra {

std::size_t TrialRuleCount();
const char* TrialRule(std::size_t index);

// Tries the rules in their order and ends the process. Each line that it writes to pipe is a JSON object with
// one member:
//   "call": NAME                   the call that comes next
//   "noDriver": WORDS              why the module is not a driver; nothing follows
//   "facts": [ID, NAME, VERSION]
//   "finding": [EFinding, WORDS]   for each rule
//   "done": true
[[noreturn]] void RunTrial(const CContractTest& test, int pipe);

}  // namespace vastra
