/* A driver that lets its caller wait half a second to open a node, to read it and to close it. */
#include <unistd.h>

#include "vastra/plc/driver_api.h"

static int Wait(void) { return usleep(500000), statusOk; }

static int OpenNode(DriverRecord config, int mode, int* handle) {
  (void)config, (void)mode;
  *handle = 0;
  return Wait();
}

static int ReadNode(float* values, int count, int handle) {
  while (count > 0) values[--count] = (float)handle;
  return Wait();
}

static void CloseNode(int handle) {
  (void)handle;
  Wait();
}

int GetDriverApiVersion(void) { return 2; }

DriverHeader GetDriverHeader(void) {
  static const DriverFunctions functions = {.Open = OpenNode, .Read = ReadNode, .Close = CloseNode};
  const DriverHeader header = {9077, "Slow", &functions};
  return header;
}
