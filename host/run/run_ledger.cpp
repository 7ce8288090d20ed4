#include "host/run/run_ledger.h"

#include "vastra/platform/array.h"

namespace vastra {

CLedgerSums Sum(const std::vector<CRunLedger>& ledgers) {
  CLedgerSums sums;
  for (const CRunLedger& entry : ledgers) {
    sums.recovered += entry.ledger.recovered;
    sums.onDisk += entry.ledger.onDisk;
    sums.inJournal += entry.ledger.inJournal;
    sums.lost += entry.ledger.lost;
  }
  return sums;
}

CString LossText(const std::vector<CRunLedger>& ledgers) {
  const std::uint64_t lost = Sum(ledgers).lost;
  if (lost == 0) return {};
  CStringArray causes;
  for (const CRunLedger& entry : ledgers)
    for (const CLogLoss& loss : entry.ledger.losses)
      if (FindIn(causes, loss.cause) < 0) causes.Add(loss.cause);
  CString list;
  for (const CString& cause : causes) list += (list.IsEmpty() ? "" : "; ") + cause;
  return CString(std::to_string(lost)) + (lost == 1 ? " row" : " rows") + " lost" +
         (list.IsEmpty() ? CString() : " (" + list + ")");
}

}  // namespace vastra
