// The versions of the stored form of all configuration objects, and the function that stores and loads them.
// The host writes the file: it puts the version before the objects and passes it to each of them.
#pragma once

#include "vastra/core/field_walk.h"
#include "vastra/logfiles/log_policy.h"

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

// The limits that only a named form has. Loading a stream sets them to their defaults.
inline void RetentionFields(CFieldWalk& walk, CLogRetention& retention) {
  if (walk.IsLoading()) retention = {};
  walk.Amount("keepDays", retention.keepDays);
  walk.Amount("keepBytes", retention.keepBytes);
  walk.Amount("minFree", retention.minFree);
}

}  // namespace vastra
