// The file of a driver module, checked before anything in it is loaded: what it is, who can change it, and
// whether all of it is there.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Returns a descriptor of the file, which the caller closes, or -1 with the reason why the file cannot be
// trusted. The module is loaded by this descriptor later, so that it is the checked file in any case.
int OpenModuleFile(const CString& folder, const CString& fileName, CString& reason);

// Why the file at path is not a module as a whole, whoever can change it; empty if it is one.
CString FindModuleFault(const CString& path);

// The path by which this process loads the module of the descriptor.
CString LoadPathOf(int descriptor);

}  // namespace vastra
