#include "vastra/logfiles/log_ledger.h"

#include <algorithm>

namespace vastra {

void CLogLedger::Lose(const CString& cause, std::uint64_t rows, const _timeb& first, const _timeb& last) {
  if (rows == 0) return;
  const auto same = std::find_if(losses.begin(), losses.end(),
                                 [&cause](const CLogLoss& loss) { return loss.cause == cause; });
  if (same == losses.end()) {
    losses.push_back({cause, rows, first, last});
    lost += rows;
    return;
  }
  lost += rows;
  same->rows += rows;
  same->last = last;
}

CLogLedger& CLogLedger::operator+=(const CLogLedger& other) {
  constexpr std::uint64_t CLogLedger::*kCounts[] = {
      &CLogLedger::offered, &CLogLedger::unwanted, &CLogLedger::taken,     &CLogLedger::recovered,
      &CLogLedger::onDisk,  &CLogLedger::rotated,  &CLogLedger::inJournal, &CLogLedger::inMemory};
  for (const auto count : kCounts) this->*count += other.*count;
  for (const CLogLoss& loss : other.losses) Lose(loss.cause, loss.rows, loss.first, loss.last);
  return *this;
}

}  // namespace vastra
