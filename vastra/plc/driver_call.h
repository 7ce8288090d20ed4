// The calls from the engine to a driver module. An exception that leaves the driver is caught here.
#pragma once

#include <cstring>

#include "vastra/platform/module.h"
#include "vastra/plc/driver_api.h"

namespace vastra {

constexpr int kVersionWithClose = 2;              // of the driver interface
constexpr int kVersionWithCheck = 3;              // the same for CheckDriverConfig and GetDriverLine
constexpr int kThrew = 0;                         // not a status of a driver: counts as unknown
constexpr std::size_t kLongestDriverText = 2000;  // bytes that are shown of a driver's text

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

// An optional export that answers a question about the settings of a node.
using CDriverQuestion = const char* (*)(DriverRecord config);

// The export of that name, or null if the module is of an older version or does not have it.
inline CDriverQuestion FindQuestion(HMODULE module, const char* name) {
  if (AskVersion(module) < kVersionWithCheck) return nullptr;
  return reinterpret_cast<CDriverQuestion>(FindExport(module, name));
}

// A copy of a driver's text, cut at kLongestDriverText between two characters.
inline CString CopyDriverText(const char* text) {
  if (!text) return CString();
  std::size_t length = ::strnlen(text, kLongestDriverText + 1);
  if (length > kLongestDriverText)
    for (--length; length > 0 && IsInsideCharacter(text[length]);) --length;
  return CString(text, length);
}

}  // namespace vastra
