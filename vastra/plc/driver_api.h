/* The interface between a driver module and the engine: the exports of a module, the table of calls, the
 * record of one node and the status codes. Plain C without includes. A driver author needs only this file.
 *
 * A module is a shared library, *.so, next to the host's executable. The engine loads it, calls
 * GetDriverHeader, and then the functions of the table. Several connections of one process share one module
 * in memory; the handle from Open identifies the connection.
 *
 * Threads: calls with one handle never overlap. Calls for different handles, and Open, may come on several
 * threads at the same moment, except for nodes that share a line (GetDriverLine).
 * Strings: UTF-8, terminated by a 0. A string belongs to the side that passes it. It is valid until the next
 * call with its handle, a string of a dialog function until the next call of a dialog function: copy what is
 * needed longer. A null string counts as empty. Up to 2,000 bytes of an error text are shown.
 * Faults: no exception may leave a driver, and no signal may end one. A call may block for as long as the
 * driver's own time-out; a driver that has lost its connection reconnects by itself, in the next call.
 */
#ifndef VASTRA_PLC_DRIVER_API_H
#define VASTRA_PLC_DRIVER_API_H

/* Of this file. Version 2 adds Close and GetDriverApiVersion, version 3 CheckDriverConfig and GetDriverLine.
 */
#define DRIVER_API_VERSION 3

#if defined(__GNUC__)
#define DRIVER_EXPORT __attribute__((visibility("default")))
#else
#define DRIVER_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The settings of one node. The engine stores all of them and passes them back, but reads only variableCount
 * and plcType: the driver defines the meaning of the others. */
typedef struct DriverRecord {
  int cardNumber;
  int timeOut;
  int station;
  int registerAddress;
  int registerAddressExt;
  int plcNodeAddress;
  unsigned int variableCount; /* number of values of the node: the count of each Read and Write */
  int plcType;                /* the driver's id: how a stored node finds its driver again */
  int openState;              /* 0 when Open gets the record */
  const char* text1;
  const char* text2;
  int value1;
  int value2;
  int value3;
  int value4;
  int value5; /* not stored in configurations: 0 after loading one */
} DriverRecord;

/* The results of Open, Read and Write. Any other value, also 0, is reported as an unknown error. */
enum {
  statusNoMemory = 58,      /* the driver has run out of memory */
  statusExtendedError = 59, /* a failure that GetExtendedError explains */
  statusOk = 60,            /* the only success */
  statusNotOpened = 77,     /* Read, Write: the handle is not open */
  statusInvalidFrame = 93,  /* Read, Write: a bad frame came from the PLC */
  statusTimeout = 109,      /* Read, Write: no reply in time */
  statusInvalidMode = 125,  /* Open: the mode is not supported */
  statusReplyError = 157    /* the PLC replied with an error that GetReplyError explains */
};

/* The failures, one row each, for the tables of hosts and drivers:
 * X(status, title in a list, meaning, severity and message of Read and Write, message of Open, text)
 * An empty message: the operation does not have the status, and it is reported as an unknown error. text: the
 * function of the table whose string replaces the message, or None. */
#define DRIVER_TRANSFER_FAILURES(X)                                                                       \
  X(statusNoMemory, "No memory", "the driver has run out of memory", Fatal, "No memory.",                 \
    "Not enough memory.", None)                                                                           \
  X(statusExtendedError, "Extended error", "", Error, "Extended error.", "Extended error.",               \
    GetExtendedError)                                                                                     \
  X(statusNotOpened, "Not opened", "the handle is not open", Fatal, "Driver is not opened.", "", None)    \
  X(statusInvalidFrame, "Invalid frame", "a bad frame came from the device", Error, "Invalid frame.", "", \
    None)                                                                                                 \
  X(statusTimeout, "Time-out", "no reply in time", Error, "Timeout error.", "", None)                     \
  X(statusReplyError, "Reply error", "", Error, "Reply error.", "Reply error.", GetReplyError)
#define DRIVER_FAILURES(X)    \
  DRIVER_TRANSFER_FAILURES(X) \
  X(statusInvalidMode, "Invalid mode", "the driver does not open for this", Error, "", "Invalid mode.", None)

/* What a connection is opened for. */
enum { driverModeRead = 0, driverModeWrite = 1, driverModeOther = 100 };

/* A null slot is a function that the driver does not offer. */
typedef struct DriverFunctions {
  /*  0  Shows the driver's own modal dialog, for which DriverHost has a form. isNew 1: start from defaults;
   *     0: the settings of SetConfig. 1 if the user accepted it. Null: no dialog. */
  int (*ShowConfig)(int isNew);
  /*  1  The settings that the user accepted in the dialog. */
  DriverRecord (*GetConfig)(void);
  /*  2  The settings of an existing node, for the next ShowConfig. */
  void (*SetConfig)(DriverRecord config);
  /*  3  Opens a connection and stores its handle in *handle. A status. An Open that fails keeps nothing: no
   *     Close follows. Null: the driver cannot be opened. */
  int (*Open)(DriverRecord config, int mode, int* handle);
  /*  4  Fills values[0] to values[count - 1] from the node, and nothing after it. A status. */
  int (*Read)(float* values, int count, int handle);
  /*  5  Sends values[0] to values[count - 1] to the node. A status. */
  int (*Write)(float* values, int count, int handle);
  /*  6  Since version 2: ends the connection, and no further call has this handle. In a module of version 1
   *     this slot may hold anything; its connections end with the module. */
  void (*Close)(int handle);
  /*  7, 8  Not used. Set them to null. */
  void (*spare[2])(void);
  /*  9  The message text after statusExtendedError, requested at once and on the same thread. After
   *     a failed Open, handle is what Open stored, -1 if it stored nothing. Null: "Extended error." */
  const char* (*GetExtendedError)(int handle);
  /* 10  The same after statusReplyError. Null: "Reply error." */
  const char* (*GetReplyError)(int handle);
} DriverFunctions;

/* Name and table stay valid while the module is loaded. */
typedef struct DriverHeader {
  int id;                           /* identifies the driver; stored in configurations */
  const char* name;                 /* shown to users */
  const DriverFunctions* functions; /* null: offers nothing */
} DriverHeader;

/* The kinds of fields. */
enum {
  driverFieldNumber = 0, /* a whole number from low to high */
  driverFieldText = 1,   /* a text of one line */
  driverFieldChoice = 2  /* one of choices */
};

/* One setting in a form. A host leaves out a field that it cannot show (an unknown kind, no choices, a low
 * above high, no buffer for a text or a text too long for a line): its value stays. */
typedef struct DriverField {
  const char* name; /* a word or two, shown to the user */
  const char* help; /* a sentence or two; null: none */
  int kind;         /* driverField... */
  int low;          /* driverFieldNumber: the bounds, both allowed */
  int high;
  const char* const* choices; /* driverFieldChoice: the choices */
  int choiceCount;            /* 1 to 1000 */
  int number;                 /* in and out: the number, or the index of the choice */
  char* text;                 /* in and out: driverFieldText, in a buffer of the module */
  unsigned int textSize;      /* bytes of the buffer, including the final 0 */
} DriverField;

/* A form for the user. It belongs to the module and must not change until ShowForm returns. */
typedef struct DriverForm {
  const char* title;
  DriverField* fields; /* from top to bottom */
  int fieldCount;      /* 0 to 40 */
  /* Optional: called on OK when each field by itself is valid. Returns null, or a sentence that is shown to
   * the user while the form stays open; the sentence must be valid until the next call of check. fields is a
   * read-only copy with the user's entries, in the order of the form: the form's own fields do not change
   * until the values are accepted. */
  const char* (*check)(const DriverField* fields, int fieldCount, void* user);
  void* user; /* for check */
} DriverForm;

#define DRIVER_HOST_VERSION 1 /* of the table below in this file */

/* The services of a host with windows for a module. Only from ShowConfig, on its thread. */
typedef struct DriverHost {
  int version; /* of the table: increased for each function that is added at the end */
  /* Since version 1. Shows form, modal. 1: accepted, and the fields have the user's values, each within its
   * bounds; 0: cancelled, or the form cannot be shown, and the fields are unchanged. */
  int (*ShowForm)(const DriverForm* form);
} DriverHost;

/* The export that makes a module a driver. It can be called directly after loading and any number of times.
 */
DRIVER_EXPORT DriverHeader GetDriverHeader(void);

/* Optional: the DRIVER_API_VERSION that the module was written for. A module without it is of version 1, and
 * only the slots of version 1 are looked at. */
DRIVER_EXPORT int GetDriverApiVersion(void);

/* Optional, in a module of any version: receives the services of the host; null from a host without windows.
 * Called once for each node that loads the module, before any function of the table, and so also while other
 * nodes are open and used by other threads. host is valid until the next call or until the module is
 * unloaded.
 */
DRIVER_EXPORT void SetDriverHost(const DriverHost* host);

/* Optional, since version 3: returns null if config is right, or one sentence about the first wrong setting
 * that begins with its name in a configuration ("text1 has no host"). The sentence is valid until the next
 * call on its thread. Called before the node is opened, on the thread that builds the configuration, perhaps
 * while other nodes are used by other threads. Must not contact a device. variableCount 0: not known yet. */
DRIVER_EXPORT const char* CheckDriverConfig(DriverRecord config);

/* Optional, since version 3: returns the name of the line to the node, such as a serial port, if several
 * nodes share it and the driver serves one call at a time on it. The host then waits longer for these nodes.
 * Null or empty: the node has a line of its own. Called as CheckDriverConfig, and valid as long. */
DRIVER_EXPORT const char* GetDriverLine(DriverRecord config);

#ifdef __cplusplus
}
#endif

#endif
