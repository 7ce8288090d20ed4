// The folders in which run, watch, check, drivers and probe look for driver modules.
#pragma once

#include "host/cli/arguments.h"
#include "host/cli/exit.h"

namespace vastra {

// --driver-folder
class CDriverFolders {
 public:
  explicit CDriverFolders(CArguments& arguments);

  // Before the first use of a driver. tries: see SearchDrivers. kWrongUse after a message if a folder cannot
  // be searched.
  EExit Search(bool tries = true) const;

 private:
  CArgument<std::vector<CString>> m_folders;
};

// Prints a line for each file that looks like a module and is not used; --quiet drops them.
void WarnOfModules();

}  // namespace vastra
