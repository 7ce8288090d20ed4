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

CString OtherThanFile(const CString& path) {
  std::error_code ignored;
  switch (fs::status(path.Std(), ignored).type()) {
    case fs::file_type::regular:
      return {};
    case fs::file_type::directory:
      return "a folder";
    case fs::file_type::fifo:
      return "a FIFO";
    case fs::file_type::socket:
      return "a socket";
    case fs::file_type::block:
    case fs::file_type::character:
      return "a device";
    default:
      return fs::is_symlink(path.Std(), ignored) ? "a link to nothing" : "nothing";
  }
}

}  // namespace vastra
