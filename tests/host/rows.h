// Counts the rows that a logger has written.
#pragma once

#include <algorithm>

#include "tests/support/files.h"

namespace vastra {

// The rows of all text logs in folder.
inline std::uint64_t Rows(const CString& folder) {
  std::uint64_t rows = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Std())) {
    if (entry.path().extension() != ".csv") continue;
    const std::string text = ReadBytes(CString(entry.path().string()));
    rows += static_cast<std::uint64_t>(std::ranges::count(text, '\n')) - 1;
  }
  return rows;
}

}  // namespace vastra
