// What the stored forms of all configuration objects share: the versions, and the one way of storing and
// loading. The file is the host's: it keeps the version ahead of the objects and hands it to each of them.
#pragma once

#include "vastra/core/field_walk.h"

namespace vastra {

constexpr UINT kVersionFirst = 1002;
constexpr UINT kVersionNaming = 1003;  // outputs say how their logs are named
constexpr UINT kVersionNewest = kVersionNaming;

constexpr bool IsKnownVersion(UINT version) { return version >= kVersionFirst && version <= kVersionNewest; }

// Stores or loads the fields of object, as the archive says; what the archive throws passes through. With an
// unknown version neither object nor archive is touched.
template <class T>
void SerializeFields(T& object, CArchive& ar, UINT version) {
  if (!IsKnownVersion(version)) return;
  CArchiveWalk walk(ar, version);
  object.Fields(walk);
}

}  // namespace vastra
