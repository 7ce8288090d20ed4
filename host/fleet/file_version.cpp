#include "host/fleet/file_version.h"

#include <unistd.h>

#include <cerrno>
#include <vector>

namespace vastra {

std::optional<CVersion> VersionOfFile(int file) {
  constexpr std::size_t kBlock = std::size_t{1} << 18;
  std::vector<char> block(kBlock);
  CSha256 digest;
  for (off_t place = 0;;) {
    const ssize_t read = ::pread(file, block.data(), block.size(), place);
    if (read < 0 && errno == EINTR) continue;
    if (read < 0) return std::nullopt;
    if (read == 0) return digest.Finish();
    digest.Add(block.data(), static_cast<std::size_t>(read));
    place += read;
  }
}

}  // namespace vastra
