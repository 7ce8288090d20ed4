#include "host/cli/files.h"

#include <filesystem>

namespace vastra {

namespace fs = std::filesystem;

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

bool IsSameFile(const CString& first, const CString& second) {
  std::error_code ignored;
  return fs::equivalent(first.Std(), second.Std(), ignored);
}

}  // namespace vastra
