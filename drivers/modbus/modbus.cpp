// Modbus: a driver module for controllers that speak Modbus TCP or RTU. This file is its side of the driver
// interface. docs/modbus.md has its settings and messages.
#include <cstdio>
#include <map>
#include <mutex>
#include <new>

#include "connection.h"

namespace modbus {
namespace {
std::mutex g_lock;
std::map<int, std::unique_ptr<CConnection>> g_connections;
int g_lastHandle = 0;
thread_local char t_openError[512] = "";
CConnection* Find(int handle) {
  const std::lock_guard guard(g_lock);
  const auto found = g_connections.find(handle);
  return found == g_connections.end() ? nullptr : found->second.get();
}
int Open(DriverRecord config, int mode, int* handle) {
  if (mode != driverModeRead && mode != driverModeWrite) return statusInvalidMode;
  try {
    std::string fault;
    auto connection = CConnection::Open(config, mode, fault);
    if (!connection) {
      std::snprintf(t_openError, sizeof t_openError, "Modbus: %s", fault.c_str());
      return statusExtendedError;
    }
    const std::lock_guard guard(g_lock);
    g_connections.emplace(g_lastHandle + 1, std::move(connection));
    *handle = ++g_lastHandle;
    return statusOk;
  } catch (const std::bad_alloc&) {
    return statusNoMemory;
  }
}
int Read(float* values, int count, int handle) {
  CConnection* connection = Find(handle);
  return connection ? connection->Read(values, count) : statusNotOpened;
}
int Write(float* values, int count, int handle) {
  CConnection* connection = Find(handle);
  return connection ? connection->Write(values, count) : statusNotOpened;
}
void Close(int handle) {
  const std::lock_guard guard(g_lock);
  g_connections.erase(handle);
}
const char* GetError(int handle) {
  CConnection* connection = Find(handle);
  return connection ? connection->LastError() : t_openError;
}
constexpr DriverFunctions kFunctions = {
    .ShowConfig = nullptr,
    .GetConfig = nullptr,
    .SetConfig = nullptr,
    .Open = Open,
    .Read = Read,
    .Write = Write,
    .Close = Close,
    .spare = {},
    .GetExtendedError = GetError,
    .GetReplyError = GetError,
};
}  // namespace
}  // namespace modbus

DriverHeader GetDriverHeader() { return {modbus::kDriverId, "Modbus", &modbus::kFunctions}; }

int GetDriverApiVersion() { return DRIVER_API_VERSION; }
