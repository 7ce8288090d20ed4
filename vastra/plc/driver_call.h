// The calls from the engine to a driver module. An exception that leaves the driver is caught here.
#pragma once

#include "vastra/platform/module.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

constexpr int kVersionWithClose = 2;  // of the driver interface
constexpr int kThrew = 0;             // not a status of a driver: counts as unknown

// Returns the result of call, or ifThrown if call throws.
template <class Result, class Call>
Result AskDriver(Result ifThrown, const Call& call) {
  try {
    return call();
  } catch (...) {
    return ifThrown;
  }
}

// Fills header from the module's GetDriverHeader. False, with header unchanged, if there is none.
inline bool AskHeader(HMODULE module, DriverHeader& header) {
  const auto ask = reinterpret_cast<decltype(&GetDriverHeader)>(FindExport(module, "GetDriverHeader"));
  return ask && AskDriver(false, [&] { return header = ask(), true; });
}

// The version of the driver interface that module was written for.
inline int AskVersion(HMODULE module) {
  const auto ask =
      reinterpret_cast<decltype(&GetDriverApiVersion)>(FindExport(module, "GetDriverApiVersion"));
  return ask ? AskDriver(1, ask) : 1;
}

// Passes host, null for none, to the module if it exports SetDriverHost.
inline void GiveHost(HMODULE module, const DriverHost* host) {
  const auto give = reinterpret_cast<decltype(&SetDriverHost)>(FindExport(module, "SetDriverHost"));
  if (give) AskDriver(0, [&] { return give(host), 0; });
}

}  // namespace vastra
