// The exit status of the program.
#pragma once

namespace vastra {

enum EExit {
  kDone = 0,
  kFailed = 1,    // the work failed
  kWrongUse = 2,  // of the command line
  kRefused = 3,   // the configuration cannot be read, or an equation in it does not compile
};

}  // namespace vastra
