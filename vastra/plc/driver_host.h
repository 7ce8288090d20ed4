// The services of the host for driver modules: forms for their settings. A host with a window system installs
// its table. Without a table the modules receive null, and their dialogs count as cancelled.
#pragma once

#include "vastra/platform/api.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// Installs host for the links that are created from now on. The caller keeps host, which must exist while one
// of these links exists. Null restores the default. Returns the previous host, null for the default. Must not
// be called while worker threads run.
VASTRA_API const DriverHost* InstallDriverHost(const DriverHost* host);

// The installed host, or null.
VASTRA_API const DriverHost* InstalledDriverHost();

}  // namespace vastra
