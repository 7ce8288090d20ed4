#include "vastra/stages/plc_enable.h"

namespace vastra {

void CPlcEnable::Open(CStringArray& names) { m_computerNodeIndex = FindIn(names, "ComputerNode"); }

int CPlcEnable::CheckIfWrite(CLogSample& sample, UINT nodeNumber) const {
  if (m_computerNodeIndex < 0) return 1;
  if (m_computerNodeIndex >= sample.m_values.GetSize()) return 0;
  return double{sample.m_values[m_computerNodeIndex]} == static_cast<double>(nodeNumber);
}

}  // namespace vastra
