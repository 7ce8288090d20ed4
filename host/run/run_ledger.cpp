#include "host/run/run_ledger.h"

#include <map>
#include <utility>

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

void Merge(std::vector<CRunLedger>& all, const std::vector<CRunLedger>& more) {
  std::map<std::pair<bool, CString>, std::size_t> next;  // where to look for the next account of a name
  const std::size_t count = all.size();
  for (const CRunLedger& entry : more) {
    std::size_t& place = next[{entry.isSummary, entry.name}];
    while (place < count && !(all[place].isSummary == entry.isSummary && all[place].name == entry.name))
      ++place;
    if (place < count)
      all[place++].ledger += entry.ledger;
    else
      all.push_back(entry);
  }
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
