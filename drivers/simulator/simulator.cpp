// The simulator: a driver module without a PLC, for demonstrations and tests, and as an example of a driver.
// This file has its exports. docs/driver-guide.md has the table of its settings.
#include "connection.h"
#include "drivers/common/handles.h"

DriverHeader GetDriverHeader() {
  return {simulator::kDriverId, driver::kNodeForm.title, &driver::kFunctions<simulator::CConnection>};
}

int GetDriverApiVersion() { return DRIVER_API_VERSION; }

void SetDriverHost(const DriverHost* host) { driver::SetHost(host); }

const char* CheckDriverConfig(DriverRecord config) { return driver::CheckConfig(config); }

const char* GetDriverLine(DriverRecord config) { return driver::GetLine(config); }
