#ifndef HOSTILE_TABLES_H
#define HOSTILE_TABLES_H

#include "vastra/plc/driver_api.h"

extern const DriverFunctions soundTable, emptyTable, mutedTable, garbageTable, zeroOpenTable, zeroTable,
    formatTable, nullTextTable;

#endif
