/* Tables of drivers that break a rule each, or use one to its limit. hostile_driver.c makes a module of one.
 */
#include "tests/drivers/hostile_tables.h"

#include <stddef.h>

static int Open(DriverRecord config, int mode, int* handle) {
  (void)config, (void)mode;
  *handle = -2147483647 - 1;
  return statusOk;
}
static int OpenZero(DriverRecord config, int mode, int* handle) { return Open(config, mode, handle), 0; }
static int OpenInWords(DriverRecord config, int mode, int* handle) {
  return Open(config, mode, handle), statusReplyError;
}

static int Transfer(float* values, int count, int handle) {
  int i;
  (void)handle;
  for (i = 0; i < count; ++i) values[i] = (float)i;
  return statusOk;
}
static int TransferZero(float* values, int count, int handle) { return Transfer(values, count, handle), 0; }
static int TransferInWords(float* values, int count, int handle) {
  return Transfer(values, count, handle), statusExtendedError;
}

static const char* Format(int handle) { return (void)handle, "%s%n%s 100%"; }
static const char* NullText(int handle) { return (void)handle, NULL; }

static DriverRecord NullRecord(void) {
  const DriverRecord record = {0, 0, 0, 0, 0, 0, 0, 0, 0, NULL, NULL, 0, 0, 0, 0, 0};
  return record;
}
static int Accept(int isNew) { return (void)isNew, 1; }

#define GARBAGE(Function) ((Function)(size_t)0x5A5A5A5A)
typedef void (*CloseFunction)(int);
typedef void (*SpareFunction)(void);

const DriverFunctions soundTable = {0, 0, 0, Open, Transfer, Transfer, 0, {0, 0}, Format, Format};
const DriverFunctions emptyTable = {0, 0, 0, 0, 0, 0, 0, {0, 0}, 0, 0};
const DriverFunctions mutedTable = {0, 0, 0, Open, 0, 0, 0, {0, 0}, 0, 0};
const DriverFunctions garbageTable = {0,
                                      0,
                                      0,
                                      Open,
                                      Transfer,
                                      Transfer,
                                      GARBAGE(CloseFunction),
                                      {GARBAGE(SpareFunction), GARBAGE(SpareFunction)},
                                      Format,
                                      Format};
const DriverFunctions zeroOpenTable = {0, 0, 0, OpenZero, Transfer, Transfer, 0, {0, 0}, Format, Format};
const DriverFunctions zeroTable = {0, 0, 0, Open, TransferZero, TransferZero, 0, {0, 0}, Format, Format};
const DriverFunctions formatTable = {0, 0,      0,      Open,  TransferInWords, TransferInWords,
                                     0, {0, 0}, Format, Format};
const DriverFunctions nullTextTable = {Accept,   NullRecord, 0,      OpenInWords, Transfer,
                                       Transfer, 0,          {0, 0}, NullText,    NullText};
