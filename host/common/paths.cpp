#include "host/common/paths.h"

#include <filesystem>

namespace vastra {

namespace fs = std::filesystem;

CString MakeAbsolute(const CString& folder, const CString& path) {
  const fs::path typed = path.Std();
  if (typed.empty() || typed.is_absolute()) return path;
  fs::path result = folder.Std();
  for (const fs::path& part : typed) {
    std::error_code ignored;
    if (part.empty() || part == ".") continue;
    if (part == ".." && result.filename() != ".." && !fs::is_symlink(result, ignored))
      result = result.parent_path();
    else
      result /= part;
  }
  return CString(result.string());
}

CString MakeAbsolute(const CString& path) {
  std::error_code ignored;
  return MakeAbsolute(CString(fs::current_path(ignored).string()), path);
}

}  // namespace vastra
