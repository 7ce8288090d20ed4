// The table of functions of a driver module: a connection for each handle. No exception leaves it.
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "drivers/common/node_form.h"

namespace driver {

// Calls for one connection never overlap. Each may throw std::bad_alloc. Connection has
//   static std::unique_ptr<Connection> Open(const DriverRecord&, int mode, std::string& fault)
//     to read or write; null with the reason in fault if the settings are wrong
//   int Read(float* values, int count)
//   int Write(const float* values, int count)
//     a status
//   const char* LastError()
//     the text for the failure of the last call, valid until the next call
template <class Connection>
class CHandles {
 public:
  static int Open(DriverRecord config, int mode, int* handle) {
    if (mode != driverModeRead && mode != driverModeWrite) return statusInvalidMode;
    return Guarded([&] {
      std::string fault;
      std::unique_ptr<Connection> connection = Connection::Open(config, mode, fault);
      if (!connection) {
        std::snprintf(t_openError, sizeof t_openError, "%s: %s", kNodeForm.title, fault.c_str());
        return statusExtendedError;
      }
      const std::lock_guard guard(g_lock);
      g_connections.emplace(g_lastHandle + 1, std::move(connection));
      *handle = ++g_lastHandle;
      return statusOk;
    });
  }
  static int Read(float* values, int count, int handle) {
    Connection* connection = Find(handle);
    return connection ? Guarded([&] { return connection->Read(values, count); }) : statusNotOpened;
  }
  static int Write(float* values, int count, int handle) {
    Connection* connection = Find(handle);
    return connection ? Guarded([&] { return connection->Write(values, count); }) : statusNotOpened;
  }
  // The connection is destroyed after the unlock, so that other handles do not wait for it.
  static void Close(int handle) {
    std::unique_lock guard(g_lock);
    const auto closed = g_connections.extract(handle);
    guard.unlock();
  }
  static const char* GetError(int handle) {
    Connection* connection = Find(handle);
    return connection ? connection->LastError() : t_openError;
  }

 private:
  template <class Call>
  static int Guarded(Call call) {
    try {
      return call();
    } catch (const std::bad_alloc&) {
      return statusNoMemory;
    } catch (...) {
      return 0;  // an unknown error
    }
  }
  // The connection stays in place until its Close, and calls with its handle do not overlap: no lock is
  // needed to use it.
  static Connection* Find(int handle) {
    const std::lock_guard guard(g_lock);
    const auto found = g_connections.find(handle);
    return found == g_connections.end() ? nullptr : found->second.get();
  }

  static inline std::mutex g_lock;  // of the two below
  static inline std::map<int, std::unique_ptr<Connection>> g_connections;
  static inline int g_lastHandle = 0;
  // The text of a failed Open, which has no handle. The host asks for it on the same thread.
  static inline thread_local char t_openError[512] = "";
};

// All slots, those of the dialog included.
template <class Connection>
constexpr DriverFunctions kFunctions = {
    .ShowConfig = ShowConfig,
    .GetConfig = GetConfig,
    .SetConfig = SetConfig,
    .Open = CHandles<Connection>::Open,
    .Read = CHandles<Connection>::Read,
    .Write = CHandles<Connection>::Write,
    .Close = CHandles<Connection>::Close,
    .spare = {},
    .GetExtendedError = CHandles<Connection>::GetError,
    .GetReplyError = CHandles<Connection>::GetError,
};

}  // namespace driver
