// DriverConfig: the settings of one PLC node, as the engine keeps, stores and shows them. The engine reads
// only plcType and variableCount; the driver defines the meaning of the others.
#pragma once

#include "vastra/platform/string.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

// What the values of a node are in a scan in which the node does not answer.
enum class EAbsent {
  fail,  // none: the scan fails
  nan,   // NaN
  hold   // those of its last answer, NaN before the first one
};

struct VASTRA_API DriverConfig {
  int cardNumber = 0;
  int timeOut = 0;
  int station = 0;
  int registerAddress = 0;
  int registerAddressExt = 0;
  int plcNodeAddress = 0;
  UINT variableCount = 0;  // number of values of the node
  int plcType = 0;         // the driver's ID
  int openState = 0;
  CString text1;
  CString text2;
  int value1 = 0;
  int value2 = 0;
  int value3 = 0;
  int value4 = 0;
  int value5 = 0;

  bool operator==(const DriverConfig&) const = default;
};

// The form in which a driver gets the settings. Its strings are those of config, which must outlive it.
VASTRA_API DriverRecord ToRecord(const DriverConfig& config);
// A copy of a record that comes from a driver; null strings count as empty.
VASTRA_API DriverConfig FromRecord(const DriverRecord& record);

}  // namespace vastra
