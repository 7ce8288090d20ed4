// The trial of driver modules: each module is loaded in a process of its own first and asked for its header.
// A module that crashes, hangs or ends its process there is left out, and does the host no harm.
//
// The process is the host's own executable with an argument that no user types. A host that uses the trial
// begins its main with
//
//   if (IsModuleTrial(argc, argv)) return RunModuleTrial(argv);
#pragma once

#include "vastra/plc/driver_factory.h"

namespace vastra {

bool IsModuleTrial(int argc, char** argv);
// Returns the exit status.
int RunModuleTrial(char** argv);

// For CDriverSearch::m_examine. Checks each file and tries the modules, several at a time. The descriptors of
// those that are drivers stay open, because the modules are loaded by them.
void TryModules(CArray<CModuleFile>& files);

}  // namespace vastra
