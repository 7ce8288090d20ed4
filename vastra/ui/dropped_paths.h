// The files and folders that the user drops on a window.
#pragma once

#include <vector>

#include "vastra/platform/string.h"

class QMimeData;

namespace vastra {

// Those of this machine, in their order.
VASTRA_API std::vector<CString> DroppedPaths(const QMimeData& data);

}  // namespace vastra
