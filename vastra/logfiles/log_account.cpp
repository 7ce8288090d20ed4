#include "vastra/logfiles/log_account.h"

namespace vastra {

std::uint64_t CRowsOfFiles::Remove(const CString& file) {
  const auto found = m_rows.find(file.Std());
  if (found == m_rows.end()) return 0;
  const std::uint64_t rows = found->second;
  m_rows.erase(found);
  return rows;
}

void CLogAccount::Take(const _timeb& time) {
  if (m_ledger.inMemory == 0) m_first = time;
  m_last = time;
  ++m_ledger.taken;
  ++m_ledger.inMemory;
}

void CLogAccount::Save(const CString& file) {
  m_rows.Add(file, m_ledger.inMemory);
  m_ledger.onDisk += m_ledger.inMemory;
  m_ledger.inMemory = 0;
}

void CLogAccount::Discard(const CString& cause) {
  m_ledger.Lose(cause, m_ledger.inMemory, m_first, m_last);
  m_ledger.inMemory = 0;
}

}  // namespace vastra
