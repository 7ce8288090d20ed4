// Where a host looks for driver modules, and what there is to tell about them.
#pragma once

#include <vector>

#include "vastra/plc/driver_factory.h"

namespace vastra {

// For the first call of CDriverFactory::Instance: the folder of the executable, then folders, which are
// absolute, then those of the environment variable VASTRA_DRIVERS, which has colons between them. A folder
// that is named twice is searched once. tries: the modules are tried before they are loaded.
void SearchDrivers(const std::vector<CString>& folders, bool tries);

// Why folder cannot be searched; empty if it can.
CString WhyNotSearched(const CString& folder);

// Searches if that was not done yet. Returns a line for each folder of VASTRA_DRIVERS that cannot be
// searched, each file, folder or link that looks like a module and is left out, and each driver whose ID
// another one has as well.
std::vector<CString> FindModuleFaults();

// The name of the file for messages: with its folder unless that is the folder of the executable.
CString ShownName(const CModuleFile& file);

}  // namespace vastra
