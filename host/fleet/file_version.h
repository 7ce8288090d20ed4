// VersionOfFile: the version of a file's content.
#pragma once

#include <optional>

#include "host/fleet/sha256.h"

namespace vastra {

// Reads file, a descriptor, from its beginning to its end. Empty with the reason in errno if that fails.
std::optional<CVersion> VersionOfFile(int file);

}  // namespace vastra
