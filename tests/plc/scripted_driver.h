/* A driver that does what a test says and notes what it is asked. The test loads the module too and so shares
 * its one script. */
#pragma once

#include "vastra/plc/driver_api.h"

#define SCRIPTED_ID 777
#define SCRIPTED_NO_HANDLE -2

typedef struct Script {
  DriverFunctions functions; /* the module's table: a test may take a slot out */
  int version;
  int handle;     /* that Open stores, but for SCRIPTED_NO_HANDLE */
  int openStatus; /* and what the calls answer */
  int readStatus;
  int writeStatus;
  int showResult;
  const char* text;    /* of both errors; null: none */
  float values[4];     /* what Read gives and Write leaves */
  DriverRecord record; /* what SetConfig gave and GetConfig gives */
  char calls[512];     /* "Open 0 3 a b, Read 3 5, ..." */
  int hosts;           /* how often a host was given, and the last one */
  const DriverHost* host;
} Script;

/* The script of the module, as it is at first. */
DRIVER_EXPORT Script* FreshScript(void);
