// How this side calls into a driver module. A driver is to be plain C; one that is not may throw, and that
// ends here.
#pragma once

#include "vastra/platform/module.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

constexpr int kVersionWithClose = 2;  // of the driver interface
constexpr int kThrew = 0;             // a status that no driver has: counts as unknown

// What call gives, or ifThrown if it throws.
template <class Result, class Call>
Result AskDriver(Result ifThrown, const Call& call) {
  try {
    return call();
  } catch (...) {
    return ifThrown;
  }
}

// Fills header from module's GetDriverHeader. False, with header untouched, if there is none.
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

// Gives module the services of host, null for none, if it wants to know of them.
inline void GiveHost(HMODULE module, const DriverHost* host) {
  const auto give = reinterpret_cast<decltype(&SetDriverHost)>(FindExport(module, "SetDriverHost"));
  if (give) AskDriver(0, [&] { return give(host), 0; });
}

}  // namespace vastra
