// Times as the commands show them.
#pragma once

#include <cstdint>
#include <string>

#include "vastra/platform/time.h"

namespace vastra {

// Local time in RFC 3339 with offset: "2026-03-01T12:34:56+01:00".
std::string LocalTimeText(std::int64_t seconds);
// The same with milliseconds: "2026-03-01T12:34:56.250+01:00".
std::string LocalTimeText(const _timeb& time);

}  // namespace vastra
