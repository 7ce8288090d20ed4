// The side of the driver in the test of its contract: the rules, and the process in which they are tried.
#pragma once

#include "host/cli/driver_contract.h"

namespace vastra {

std::size_t TrialRuleCount();
const char* TrialRule(std::size_t index);

// Tries the rules in their order and ends the process. Each line that it writes to pipe is an object of JSON
// with one member:
//   "call": NAME          of the call that comes now
//   "noDriver": WORDS     why the module is none; nothing follows
//   "facts": [ID, NAME, VERSION]
//   "finding": [EFinding, WORDS]   for each rule
//   "done": true
[[noreturn]] void RunTrial(const CContractTest& test, int pipe);

}  // namespace vastra
