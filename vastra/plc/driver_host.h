// The services of the host for driver modules: forms for their settings. A host with a window system installs
// its table; without it the modules are told that there is none, and their dialogs count as cancelled.
#pragma once

#include "vastra/platform/api.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// Installs host for the links made from now on. It stays the caller's and must exist as long as one of these
// links does. Null restores the default. Returns the previous host, null for the default. Not while workers
// run.
VASTRA_API const DriverHost* InstallDriverHost(const DriverHost* host);

// The installed host, or null.
VASTRA_API const DriverHost* InstalledDriverHost();

}  // namespace vastra
