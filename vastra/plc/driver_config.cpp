#include "vastra/plc/driver_config.h"

namespace vastra {
namespace {

// Both records have the same fields in the same order; only the strings differ in type.
template <class To, class From>
To Convert(const From& from) {
  return {
      from.cardNumber,     from.timeOut,       from.station, from.registerAddress, from.registerAddressExt,
      from.plcNodeAddress, from.variableCount, from.plcType, from.openState,       from.text1,
      from.text2,          from.value1,        from.value2,  from.value3,          from.value4,
      from.value5};
}

}  // namespace

DriverRecord ToRecord(const DriverConfig& config) { return Convert<DriverRecord>(config); }

DriverConfig FromRecord(const DriverRecord& record) { return Convert<DriverConfig>(record); }

}  // namespace vastra
