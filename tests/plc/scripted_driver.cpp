#include "tests/plc/scripted_driver.h"

#include <algorithm>
#include <sstream>

namespace {

Script g_script;

void Note(const char* name, auto... arguments) {
  std::ostringstream call;
  call << name;
  ((call << ' ' << arguments), ...);
  g_script.calls += call.str() + ", ";
}

int ShowConfig(int isNew) { return Note("ShowConfig", isNew), g_script.showResult; }
DriverRecord GetConfig() { return Note("GetConfig"), g_script.record; }
void SetConfig(DriverRecord config) { Note("SetConfig"), g_script.record = config; }
int Open(DriverRecord config, int mode, int* handle) {
  Note("Open", mode, config.variableCount, config.openState, config.text1, config.text2);
  g_script.record = config;
  if (g_script.handle != SCRIPTED_NO_HANDLE) *handle = g_script.handle;
  return g_script.openStatus;
}
int Read(float* values, int count, int handle) {
  Note("Read", count, handle);
  std::copy_n(g_script.values, count, values);
  return g_script.readStatus;
}
int Write(float* values, int count, int handle) {
  Note("Write", count, handle);
  std::copy_n(values, count, g_script.values);
  return g_script.writeStatus;
}
void Close(int handle) { Note("Close", handle); }
const char* GetExtendedError(int handle) { return Note("GetExtendedError", handle), g_script.text; }
const char* GetReplyError(int handle) { return Note("GetReplyError", handle), g_script.text; }

}  // namespace

Script* FreshScript() {
  g_script = {
      {ShowConfig, GetConfig, SetConfig, Open, Read, Write, Close, {}, GetExtendedError, GetReplyError}};
  return &g_script;
}

DriverHeader GetDriverHeader() { return {SCRIPTED_ID, "Scripted", &g_script.functions}; }
int GetDriverApiVersion() { return g_script.version; }
