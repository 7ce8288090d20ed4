/* A driver that lets its caller wait: value1 milliseconds to open a node, value2 to read it, value3 to close
 * it. */
#include <time.h>

#include "vastra/plc/driver_api.h"

enum { kHandles = 16 };
static DriverRecord records[kHandles];
static int handles;

static void Wait(int milliseconds) {
  const struct timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
  nanosleep(&time, 0);
}

static int OpenNode(DriverRecord config, int mode, int* handle) {
  if (mode != driverModeRead || handles == kHandles) return statusInvalidMode;
  Wait(config.value1);
  records[handles] = config;
  *handle = handles++;
  return statusOk;
}

static int ReadNode(float* values, int count, int handle) {
  int i;
  Wait(records[handle].value2);
  for (i = 0; i < count; ++i) values[i] = (float)i;
  return statusOk;
}

static void CloseNode(int handle) { Wait(records[handle].value3); }

int GetDriverApiVersion(void) { return 2; }

DriverHeader GetDriverHeader(void) {
  static const DriverFunctions functions = {.Open = OpenNode, .Read = ReadNode, .Close = CloseNode};
  const DriverHeader header = {9077, "Slow", &functions};
  return header;
}
