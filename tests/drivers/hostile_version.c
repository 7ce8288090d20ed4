/* The optional export, for a module that has it. */
#include "vastra/plc/driver_api.h"

int GetDriverApiVersion(void) { return MODULE_VERSION; }
