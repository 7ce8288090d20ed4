// A driver that follows the script of a test, which loads the module, too, and records its calls.
#pragma once

#include <string>

#include "vastra/plc/driver_api.h"

#define SCRIPTED_ID 777
#define SCRIPTED_NO_HANDLE -2

struct Script {
  DriverFunctions functions;  // the module's table; a test may clear a slot
  int version = DRIVER_API_VERSION;
  int handle = 5;  // stored by Open unless SCRIPTED_NO_HANDLE
  int openStatus = statusOk, readStatus = statusOk, writeStatus = statusOk, showResult = 1;
  const char* text = "driver's words";  // of both errors; null: none
  float values[4] = {1, 2, 3, 4};       // returned by Read, set by Write
  DriverRecord record = {};             // set by SetConfig, returned by GetConfig
  std::string calls = {};               // "Open 0 3 a b, Read 3 5, ..."
};

extern "C" DRIVER_EXPORT Script* FreshScript();
