// Names and a time for the tests of several modules.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "vastra/platform/array.h"

namespace vastra {

constexpr std::int32_t kStart = 1041516000;  // 2003-01-02 14:00:00 UTC

inline CStringArray Names(std::initializer_list<const char*> names) {
  CStringArray array;
  for (const char* name : names) array.Add(name);
  return array;
}
// The names, "name," each.
inline std::string Joined(const CStringArray& names) {
  std::string all;
  for (const CString& name : names) all += name.Std() + ",";
  return all;
}

}  // namespace vastra
