/* A module whose id, name and table come from the build. */
#include <stddef.h>

#include "tests/drivers/hostile_tables.h"

DriverHeader GetDriverHeader(void) {
  DriverHeader header = {MODULE_ID, MODULE_NAME, NULL};
  header.functions = MODULE_TABLE;
  return header;
}
