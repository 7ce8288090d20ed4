#include "vastra/history/repeats.h"

namespace vastra {

bool CRepeats::IsNew(const CRowStretch& row) {
  const CMoment moment = MomentOf(row.times[0]);
  if (moment != m_moment) m_rows.clear();
  m_moment = moment;
  const auto names = reinterpret_cast<std::uintptr_t>(row.log->names.get());  // equal names are one list
  m_bytes.assign(reinterpret_cast<const char*>(&names), sizeof names);
  m_bytes.append(reinterpret_cast<const char*>(row.times), sizeof *row.times);
  m_bytes.append(row.values, row.valueCount * sizeof(float));
  CCounts& counts = m_rows[m_bytes];
  if (counts.log != row.log) counts.here = 0;
  counts.log = row.log;
  if (++counts.here <= counts.kept) return false;
  counts.kept = counts.here;
  return true;
}

}  // namespace vastra
