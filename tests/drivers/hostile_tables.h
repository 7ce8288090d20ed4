/* The tables of the hostile drivers. */
#pragma once

#include "vastra/plc/driver_api.h"

extern const DriverFunctions soundTable, emptyTable, mutedTable, garbageTable, zeroOpenTable, zeroTable,
    formatTable, nullTextTable;
