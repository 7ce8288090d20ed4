#include "host/cli/files.h"

#include <filesystem>

namespace vastra {

namespace fs = std::filesystem;

bool IsSameFile(const CString& first, const CString& second) {
  std::error_code ignored;
  return fs::equivalent(first.Std(), second.Std(), ignored);
}

}  // namespace vastra
