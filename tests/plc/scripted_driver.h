/* A driver that follows the script of a test and records its calls. The test loads the module, too, and so
 * shares its script. */
#pragma once

#include "vastra/plc/driver_api.h"

#define SCRIPTED_ID 777
#define SCRIPTED_NO_HANDLE -2

typedef struct Script {
  DriverFunctions functions; /* the module's table; a test may clear a slot */
  int version;
  int handle;     /* stored by Open unless SCRIPTED_NO_HANDLE */
  int openStatus; /* and the results of the other calls */
  int readStatus;
  int writeStatus;
  int showResult;
  const char* text;    /* of both errors; null: none */
  float values[4];     /* returned by Read, set by Write */
  DriverRecord record; /* set by SetConfig, returned by GetConfig */
  char calls[512];     /* "Open 0 3 a b, Read 3 5, ..." */
  int hosts;           /* number of calls of SetDriverHost, and the last host */
  const DriverHost* host;
} Script;

/* Resets the script of the module and returns it. */
DRIVER_EXPORT Script* FreshScript(void);
