// Digests: a file for a folder that has least, greatest, sum, first and last of short blocks of each log and
// variable, so that buckets over years do not read years. A digest is derived from the logs and may be
// deleted at any time. docs/history.md describes its bytes.
#pragma once

#include <functional>
#include <vector>

#include "vastra/history/history_log.h"

namespace vastra {

// Makes the digests of the folders of logs, or brings them up to date: those that are missing, damaged, or
// lack more than an eighth of the samples of their folders. Values are read from those logs alone that no
// digest has. A folder that cannot be written has its digest in the user's cache directory. onProgress, if
// not empty, is called with the done part, from 0 to 1; false from it ends the work, and the digest as it was
// stays. Returns a line for each digest that could not be written.
VASTRA_API std::vector<CString> UpdateDigests(const std::vector<CHistoryLog>& logs,
                                              const std::function<bool(double)>& onProgress = {});

}  // namespace vastra
