#include "vastra/logfiles/log_ledger.h"

#include <algorithm>

namespace vastra {

void CLogLedger::Lose(const CString& cause, std::uint64_t rows, const _timeb& first, const _timeb& last) {
  if (rows == 0) return;
  lost += rows;
  const auto same = std::find_if(losses.begin(), losses.end(),
                                 [&cause](const CLogLoss& loss) { return loss.cause == cause; });
  if (same == losses.end()) {
    losses.push_back({cause, rows, first, last});
    return;
  }
  same->rows += rows;
  same->last = last;
}

}  // namespace vastra
