// Configuration objects from bytes and back.
#pragma once

#include <gtest/gtest.h>

#include "tests/support/configuration_bytes.h"
#include "vastra/config/input_config.h"
#include "vastra/config/output_config.h"
#include "vastra/config/plc_write_config.h"
#include "vastra/config/smart_config.h"
#include "vastra/config/stored_form.h"
#include "vastra/config/summary_config.h"
#include "vastra/config/trend_config.h"

namespace vastra {

template <class T>
std::string Stored(T&& object, UINT version = 1003) {
  return StoredBytes([&](CArchive& ar) { object.Serialize(ar, version); });
}

// What is wrong with bytes, or an empty string.
template <class T>
CString Load(T& object, const std::string& bytes, UINT version = 1003) try {
  const auto left = LoadBytes(bytes, [&](CArchive& ar) { object.Serialize(ar, version); });
  EXPECT_EQ(left, IsKnownVersion(version) ? 0 : bytes.size());
  return "";
} catch (const CArchiveException& fault) {
  return fault.Text();
}

template <class T>
T Loaded(const std::string& bytes) {
  T object;
  EXPECT_EQ(Load(object, bytes), "");
  return object;
}

}  // namespace vastra
