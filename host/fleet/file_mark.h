// CFileMark: what distinguishes one content of a file from another without reading it.
#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace vastra {

struct CFileMark {
  std::uint64_t size = 0;
  std::int64_t changed = 0;  // nanoseconds since 1970
  std::uint64_t inode = 0;

  bool operator==(const CFileMark&) const = default;
};

inline CFileMark MarkOf(const struct stat& status) {
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return {static_cast<std::uint64_t>(status.st_size),
          status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec, status.st_ino};
}

}  // namespace vastra
