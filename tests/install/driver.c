/* A driver of version 1: value i of a node is i. */
#include "vastra/plc/driver_api.h"

static int OpenNode(DriverRecord config, int mode, int* handle) {
  (void)config;
  *handle = 1;
  return mode == driverModeRead ? statusOk : statusInvalidMode;
}

static int ReadNode(float* values, int count, int handle) {
  int i;
  (void)handle;
  for (i = 0; i < count; ++i) values[i] = (float)i;
  return statusOk;
}

DriverHeader GetDriverHeader(void) {
  static const DriverFunctions functions = {.Open = OpenNode, .Read = ReadNode};
  const DriverHeader header = {77, "External", &functions};
  return header;
}
