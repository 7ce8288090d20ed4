// What the host does for driver modules: forms for their settings. A host with a window system installs its
// table; without it the modules learn that there is none, and their dialogs count as cancelled.
#pragma once

#include "vastra/platform/api.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// Installs host for the links that are made from now on. It stays the caller's, and stands for as long as one
// of them lives. Null brings the default back. Gives what was installed, null for the default. Not while
// workers run.
VASTRA_API const DriverHost* InstallDriverHost(const DriverHost* host);

// What is installed; null: nothing.
VASTRA_API const DriverHost* InstalledDriverHost();

}  // namespace vastra
