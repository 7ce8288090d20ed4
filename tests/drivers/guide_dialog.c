/* A driver that has the dialog of the guide and nothing else. */
#include <string.h>

#include "vastra/plc/driver_api.h"

#include GUIDE_CODE

static const DriverFunctions functions = {ShowConfig, GetConfig, SetConfig, 0, 0, 0, 0, {0, 0}, 0, 0};

DriverHeader GetDriverHeader(void) {
  DriverHeader header = {9900, "Text file's dialog", &functions};
  return header;
}
