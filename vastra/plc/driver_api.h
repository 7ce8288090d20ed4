/* All that a driver module and the engine share: what a module exports, the table of calls, the record of one
 * node and the status codes. Plain C, includes nothing. A driver author needs this file and no library.
 *
 * A module is a shared library, *.so, beside the host's executable. The engine loads it, calls
 * GetDriverHeader, and then the functions of the table. Several connections of one process share one module
 * in memory; the handle that Open gives tells them apart.
 *
 * Threads: calls with one handle never overlap. Calls for different handles, and Open, may come on two
 * threads at the same moment.
 * Texts: bytes, taken for UTF-8, ended by a 0. A text stays its giver's. It is valid until the next call with
 * its handle, one of the dialog functions until the next call of a dialog function: copy what is to live
 * longer. A null text counts as an empty one.
 * Faults: no exception may leave a driver, and no signal may end one. A call may block for as long as the
 * driver's own time-out; a driver that has lost its connection reconnects by itself, in the next call.
 */
#ifndef VASTRA_PLC_DRIVER_API_H
#define VASTRA_PLC_DRIVER_API_H

#define DRIVER_API_VERSION 2 /* of this file; version 2 adds Close and GetDriverApiVersion */

#if defined(__GNUC__)
#define DRIVER_EXPORT __attribute__((visibility("default")))
#else
#define DRIVER_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The settings of one node. The engine keeps, stores and hands back all of them and reads only variableCount
 * and plcType: what the others mean is up to the driver. */
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
  int value5; /* in no stored configuration: 0 after loading one */
} DriverRecord;

/* What Open, Read and Write give. Any other value is reported as an unknown error; so is 0. */
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

/* What a connection is opened for. */
enum { driverModeRead = 0, driverModeWrite = 1, driverModeOther = 100 };

/* A null slot is a function that the driver does not offer. */
typedef struct DriverFunctions {
  /*  0  Shows the driver's own modal dialog, for which DriverHost has a form. isNew 1: start from defaults;
   *     0: from what SetConfig gave. 1 if the user accepted it. Null: no dialog. */
  int (*ShowConfig)(int isNew);
  /*  1  The settings with which the dialog ended. */
  DriverRecord (*GetConfig)(void);
  /*  2  The settings of an existing node, for the next ShowConfig. */
  void (*SetConfig)(DriverRecord config);
  /*  3  Opens a connection and stores its handle in *handle. A status. An Open that fails keeps nothing: no
   *     Close follows. Null: the driver cannot be opened. */
  int (*Open)(DriverRecord config, int mode, int* handle);
  /*  4  Fills values[0] to values[count - 1] from the node, and nothing behind. A status. */
  int (*Read)(float* values, int count, int handle);
  /*  5  Sends values[0] to values[count - 1] to the node. A status. */
  int (*Write)(float* values, int count, int handle);
  /*  6  Since version 2: ends the connection, and no further call has this handle. In a module of version 1
   *     this slot may hold anything; its connections end with the module. */
  void (*Close)(int handle);
  /*  7, 8  Not used and never looked at. Null, please. */
  void (*spare[2])(void);
  /*  9  Words for the message line after statusExtendedError, asked for at once and on the same thread. After
   *     a failed Open, handle is what Open stored, -1 if it stored nothing. Null: "Extended error." */
  const char* (*GetExtendedError)(int handle);
  /* 10  The same after statusReplyError. Null: "Reply error." */
  const char* (*GetReplyError)(int handle);
} DriverFunctions;

/* Name and table stay valid while the module is loaded. */
typedef struct DriverHeader {
  int id;                           /* tells drivers apart; stored in configurations */
  const char* name;                 /* what users see */
  const DriverFunctions* functions; /* null: offers nothing */
} DriverHeader;

/* What a field of a form is for. */
enum {
  driverFieldNumber = 0, /* a whole number from low to high */
  driverFieldText = 1,   /* a text of one line */
  driverFieldChoice = 2  /* one of choices */
};

/* One setting in a form. A host leaves a field out that it cannot show (a kind it does not know, no choices,
 * a low above high, no room for a text or more of it than a line takes): its value stays. */
typedef struct DriverField {
  const char* name; /* a word or two, as the user is to see them */
  const char* help; /* a sentence or two; null: none */
  int kind;         /* driverField... */
  int low;          /* driverFieldNumber: the bounds, both allowed */
  int high;
  const char* const* choices; /* driverFieldChoice: what the user chooses from */
  int choiceCount;            /* 1 to 1000 */
  int number;                 /* in and out: the number, or the index of the choice */
  char* text;                 /* in and out: driverFieldText, in a buffer of the module's */
  unsigned int textSize;      /* bytes of the buffer, the final 0 among them */
} DriverField;

/* What the user is asked. All of it stays the module's and as it is until ShowForm returns. */
typedef struct DriverForm {
  const char* title;
  DriverField* fields; /* from top to bottom */
  int fieldCount;      /* 0 to 40 */
  /* Optional: asked on OK, once each field is fine by itself. Gives null, or a sentence that the user is
   * shown while the form stays open; the sentence is valid until the next call of check. fields is a copy
   * with what the user has entered, in the order of the form and only to be read: the form's own fields are
   * untouched until the user's values are accepted. */
  const char* (*check)(const DriverField* fields, int fieldCount, void* user);
  void* user; /* for check */
} DriverForm;

#define DRIVER_HOST_VERSION 1 /* of the table below in this file */

/* What a host with windows does for a module. Only from ShowConfig, on its thread. */
typedef struct DriverHost {
  int version; /* of the table: one more for each function that is added at the end */
  /* Since version 1. Shows form, modal. 1: accepted, and the fields have the user's values, each within its
   * bounds; 0: cancelled, or not to be shown, and the fields are as they were. */
  int (*ShowForm)(const DriverForm* form);
} DriverHost;

/* The export that makes a module a driver. It works directly after loading and any number of times. */
DRIVER_EXPORT DriverHeader GetDriverHeader(void);

/* Optional: the DRIVER_API_VERSION that the module was written for. A module without it is of version 1, and
 * only the slots of version 1 are looked at. */
DRIVER_EXPORT int GetDriverApiVersion(void);

/* Optional, in a module of any version: takes the services of the host. Null: it offers none, as a host
 * without windows. Called once for each node that loads the module, before any function of the table, and so
 * also while other nodes are open and served by other threads. host is valid until the next call or until the
 * module goes. */
DRIVER_EXPORT void SetDriverHost(const DriverHost* host);

#ifdef __cplusplus
}
#endif

#endif
