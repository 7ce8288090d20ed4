// The simulator's dialog: a form of the host's for all its settings.
#pragma once

#include "vastra/plc/driver_api.h"

namespace simulator {

// Any thread; the others are called by the screens alone, on theirs.
void SetHost(const DriverHost* host);

int ShowConfig(int isNew);
DriverRecord GetConfig();
void SetConfig(DriverRecord config);

}  // namespace simulator
