// Modbus: a driver module for devices that speak Modbus TCP or RTU. This file is its side of the driver
// interface. docs/modbus.md has its settings and messages.
#include "connection.h"
#include "drivers/common/handles.h"

DriverHeader GetDriverHeader() {
  return {modbus::kDriverId, driver::kNodeForm.title, &driver::kFunctions<modbus::CConnection>};
}

int GetDriverApiVersion() { return DRIVER_API_VERSION; }

void SetDriverHost(const DriverHost* host) { driver::SetHost(host); }

const char* CheckDriverConfig(DriverRecord config) { return driver::CheckConfig(config); }

const char* GetDriverLine(DriverRecord config) { return driver::GetLine(config); }
