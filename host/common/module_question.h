// The side of the trial that is in the process of the module: it loads the module, asks for its header and
// reports. module_trial.cpp starts the process and reads the report.
#pragma once

namespace vastra {

constexpr const char* kModuleTrialWord = "--module-trial";  // the argument of the process

// Where a module is at fault: the words for the letter that the process sends before the step. Null for any
// other letter.
const char* FindModuleStep(char letter);
constexpr char kLastModuleStep = 'f';  // only after it a module is a driver

}  // namespace vastra
