#include "tests/plc/scripted_driver.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

static Script script;

static void Note(const char* format, ...) {
  const size_t used = strlen(script.calls);
  va_list args;
  va_start(args, format);
  vsnprintf(script.calls + used, sizeof script.calls - used, format, args);
  va_end(args);
}

static int ShowConfig(int isNew) { return Note("ShowConfig %d, ", isNew), script.showResult; }
static DriverRecord GetConfig(void) { return Note("GetConfig, "), script.record; }
static void SetConfig(DriverRecord config) { Note("SetConfig, "), script.record = config; }

static int Open(DriverRecord config, int mode, int* handle) {
  Note("Open %d %u %d %s %s, ", mode, config.variableCount, config.openState, config.text1, config.text2);
  script.record = config;
  if (script.handle != SCRIPTED_NO_HANDLE) *handle = script.handle;
  return script.openStatus;
}

static int Read(float* values, int count, int handle) {
  Note("Read %d %d, ", count, handle);
  memcpy(values, script.values, (size_t)count * sizeof *values);
  return script.readStatus;
}

static int Write(float* values, int count, int handle) {
  Note("Write %d %d, ", count, handle);
  memcpy(script.values, values, (size_t)count * sizeof *values);
  return script.writeStatus;
}

static void Close(int handle) { Note("Close %d, ", handle); }
static const char* GetExtendedError(int handle) { return Note("GetExtendedError %d, ", handle), script.text; }
static const char* GetReplyError(int handle) { return Note("GetReplyError %d, ", handle), script.text; }

Script* FreshScript(void) {
  static const DriverFunctions functions = {
      ShowConfig, GetConfig, SetConfig, Open, Read, Write, Close, {0, 0}, GetExtendedError, GetReplyError};
  memset(&script, 0, sizeof script);
  script.functions = functions;
  script.version = DRIVER_API_VERSION;
  script.handle = 5;
  script.openStatus = script.readStatus = script.writeStatus = statusOk;
  script.showResult = 1;
  script.text = "driver's words";
  for (int i = 0; i < 4; ++i) script.values[i] = (float)(i + 1);
  return &script;
}

DriverHeader GetDriverHeader(void) { return (DriverHeader){SCRIPTED_ID, "Scripted", &script.functions}; }
int GetDriverApiVersion(void) { return script.version; }

void SetDriverHost(const DriverHost* host) { ++script.hosts, script.host = host; }
