/* A driver that never returns from the call that HANGS names, from the n-th on, n being HANGS_AFTER. */
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "vastra/plc/driver_api.h"

static void Call(const char* name) {
  static int calls;
  const char* after = getenv("HANGS_AFTER");
  if (getenv("HANGS") && strcmp(getenv("HANGS"), name) == 0 && ++calls > (after ? atoi(after) : 0))
    for (;;) pause();
}

static int Open(DriverRecord config, int mode, int* handle) {
  return (void)config, (void)mode, Call("open"), *handle = 1, statusOk;
}
static int Read(float* values, int count, int handle) {
  (void)handle;
  static int reads;
  Call("read");
  ++reads;
  for (int i = 0; i < count; ++i) values[i] = (float)reads;
  return statusOk;
}
static int Write(float* values, int count, int handle) {
  return (void)values, (void)count, (void)handle, Call("write"), statusOk;
}
static void Close(int handle) { (void)handle, Call("close"); }

int GetDriverApiVersion(void) { return DRIVER_API_VERSION; }
DriverHeader GetDriverHeader(void) {
  static const DriverFunctions table = {0, 0, 0, Open, Read, Write, Close, {0, 0}, 0, 0};
  DriverHeader header = {9700, "Hanging", &table};
  return header;
}
