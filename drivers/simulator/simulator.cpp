// The simulator: a driver module without a PLC, for demonstrations, tests and as a pattern for drivers. This
// file is its side of the driver interface: handles, and nothing thrown beyond it. docs/driver-guide.md has
// the table of its settings.
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "connection.h"
#include "dialog.h"

namespace simulator {
namespace {

std::mutex g_lock;  // of the two below
std::map<int, std::unique_ptr<CConnection>> g_connections;
int g_lastHandle = 0;

// A failed Open leaves no handle to keep its words under. They are asked for on the thread that opened.
thread_local char t_openError[256] = "";

// The connection stays in place until its Close, and calls with its handle do not overlap: no lock is needed
// to use it.
CConnection* Find(int handle) {
  const std::lock_guard guard(g_lock);
  const auto found = g_connections.find(handle);
  return found == g_connections.end() ? nullptr : found->second.get();
}

int Open(const DriverRecord& config, int* handle) {
  CSettings settings;
  if (const std::string fault = ReadSettings(config, settings); !fault.empty()) {
    std::snprintf(t_openError, sizeof t_openError, "Simulator: %s", fault.c_str());
    return statusExtendedError;
  }
  auto connection = std::make_unique<CConnection>(std::move(settings));
  const std::lock_guard guard(g_lock);
  g_connections.emplace(g_lastHandle + 1, std::move(connection));
  *handle = ++g_lastHandle;
  return statusOk;
}

int Open(DriverRecord config, int mode, int* handle) {
  if (mode != driverModeRead && mode != driverModeWrite) return statusInvalidMode;
  try {
    return Open(config, handle);
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
    .ShowConfig = ShowConfig,
    .GetConfig = GetConfig,
    .SetConfig = SetConfig,
    .Open = Open,
    .Read = Read,
    .Write = Write,
    .Close = Close,
    .spare = {},
    .GetExtendedError = GetError,
    .GetReplyError = GetError,
};

}  // namespace
}  // namespace simulator

DriverHeader GetDriverHeader() { return {simulator::kDriverId, "Simulator", &simulator::kFunctions}; }

int GetDriverApiVersion() { return DRIVER_API_VERSION; }

void SetDriverHost(const DriverHost* host) { simulator::SetHost(host); }
