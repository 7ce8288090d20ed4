#include "vastra/history/repeats.h"

namespace vastra {

bool CRepeats::IsNew(const CHistoryRow& row, CMoment limit) {
  if (row.moment != m_moment) {
    m_moment = row.moment;
    if (!m_rows.empty()) m_rows.clear();
  }
  if (m_rows.empty() && limit > row.moment) return true;     // no other log has a row at this moment
  const std::vector<CString>* names = row.log->names.get();  // equal names are one list
  m_bytes.assign(reinterpret_cast<const char*>(&names), sizeof names);
  m_bytes.append(reinterpret_cast<const char*>(&row.time), sizeof row.time);
  m_bytes.append(row.values, row.count * sizeof(float));
  CCounts& counts = m_rows[m_bytes];
  if (counts.log != row.log) counts.here = 0;
  counts.log = row.log;
  if (++counts.here <= counts.kept) return false;
  counts.kept = counts.here;
  return true;
}

}  // namespace vastra
