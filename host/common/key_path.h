// How messages name the entries of a configuration.
#pragma once

#include "vastra/platform/string.h"

namespace vastra {

// Such as "outputs[1]".
inline CString KeyPath(const char* list, int index) {
  CString path;
  path.Format("%s[%d]", list, index);
  return path;
}

}  // namespace vastra
