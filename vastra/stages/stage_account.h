// CStageAccount: what a stage did with the samples of one output, or with the rows of one summary. The file
// link has the account of those that reached it.
#pragma once

#include "vastra/core/sample.h"
#include "vastra/logfiles/file_link.h"

namespace vastra {

class CStageAccount {
 public:
  void Begin() { m_ledger = {}; }
  // Adds the account of the link, which is about to be deleted; null: there is none.
  void End(const CFileLink* link) { m_ledger = Ledger(link); }

  CLogLedger Ledger(const CFileLink* link) const {
    CLogLedger all = m_ledger;
    if (link) all += link->GetLedger();
    return all;
  }

  void Refuse() { ++m_ledger.offered, ++m_ledger.unwanted; }
  // Calls write, which passes a sample of that time on to link, and returns its result. A sample that does
  // not reach the link is lost.
  template <class WRITE>
  int Pass(const CFileLink& link, const _timeb& time, WRITE write) {
    ++m_ledger.offered;
    const std::uint64_t before = link.TakenCount();
    const int result = write();
    if (link.TakenCount() == before) {
      ++m_ledger.taken;
      m_ledger.Lose("refused by a link", 1, time, time);
    }
    return result;
  }

 private:
  CLogLedger m_ledger;
};

}  // namespace vastra
