// CPlcEnable: decides which computer of a network writes to the PLCs. If the samples have a variable
// "ComputerNode", only the computer with that number writes; without it every computer does.
#pragma once

#include "vastra/core/sample.h"

namespace vastra {

class VASTRA_API CPlcEnable {
 public:
  CPlcEnable() = default;
  CPlcEnable(const CPlcEnable&) = delete;
  CPlcEnable& operator=(const CPlcEnable&) = delete;
  virtual ~CPlcEnable() = default;

  // Finds the variable among the names of the samples to come.
  void Open(CStringArray& names);
  // 1 if the computer with nodeNumber writes sample. The value is compared as a number, exactly; a sample too
  // short to contain it selects no computer.
  int CheckIfWrite(CLogSample& sample, UINT nodeNumber) const;

 private:
  int m_computerNodeIndex = -1;
};

}  // namespace vastra
