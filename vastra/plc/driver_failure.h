// The failures that a driver can report, as a table for the PLC link and the hosts. The rows are those of
// driver_api.h.
#pragma once

#include "vastra/plc/driver_api.h"

namespace vastra {

// A function of the driver that returns its own error text.
using CDriverErrorText = const char* (*)(int handle);

struct CDriverFailure {
  int status;
  const char* name;                         // of the constant
  const char* meaning;                      // empty if the driver has a text for it
  bool isFatal;                             // after Read and Write; after Open each failure is fatal
  const char* transfer;                     // message after Read and Write; empty: not a status of theirs
  const char* open;                         // message after Open; empty: not a status of Open
  CDriverErrorText DriverFunctions::*text;  // replaces the message; null: none
};

namespace driver_failure {

constexpr bool Fatal = true, Error = false;
constexpr CDriverErrorText DriverFunctions::*None = nullptr;
constexpr CDriverErrorText DriverFunctions::*GetExtendedError = &DriverFunctions::GetExtendedError;
constexpr CDriverErrorText DriverFunctions::*GetReplyError = &DriverFunctions::GetReplyError;

#define VASTRA_ROW(status, title, meaning, severity, transfer, open, text) \
  {status, #status, meaning, severity, transfer, open, text},
inline constexpr CDriverFailure kAll[] = {DRIVER_FAILURES(VASTRA_ROW)};
#undef VASTRA_ROW

}  // namespace driver_failure

// Null for statusOk and for an unknown status.
inline const CDriverFailure* FindFailure(int status) {
  for (const CDriverFailure& failure : driver_failure::kAll)
    if (failure.status == status) return &failure;
  return nullptr;
}

}  // namespace vastra
