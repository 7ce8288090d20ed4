// The versions of the stored form of all configuration objects, and the function that stores and loads them.
// The host writes the file: it puts the version before the objects and passes it to each of them.
#pragma once

#include "vastra/core/field_walk.h"

namespace vastra {

constexpr UINT kVersionFirst = 1002;
constexpr UINT kVersionNaming = 1003;  // adds the naming of logs to outputs
constexpr UINT kVersionNewest = kVersionNaming;

constexpr bool IsKnownVersion(UINT version) { return version >= kVersionFirst && version <= kVersionNewest; }

// Stores or loads the fields of object, depending on the archive. Throws what the archive throws. Does
// nothing if version is unknown.
template <class T>
void SerializeFields(T& object, CArchive& ar, UINT version) {
  if (!IsKnownVersion(version)) return;
  CArchiveWalk walk(ar, version);
  object.Fields(walk);
}

}  // namespace vastra
