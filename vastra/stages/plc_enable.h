// CPlcEnable: which computer of a net writes to the PLCs. Where the samples have a variable "ComputerNode",
// only the computer whose number it holds does; without one every computer does.
#pragma once

#include "vastra/core/sample.h"

namespace vastra {

class VASTRA_API CPlcEnable {
 public:
  CPlcEnable() = default;
  CPlcEnable(const CPlcEnable&) = delete;
  CPlcEnable& operator=(const CPlcEnable&) = delete;
  virtual ~CPlcEnable() = default;

  // Looks for the variable among the names of the samples to come.
  void Open(CStringArray& names);
  // 1 if the computer with nodeNumber writes sample. The value is compared as a number, exactly; a sample
  // that is too short to hold it selects nobody.
  int CheckIfWrite(CLogSample& sample, UINT nodeNumber) const;

 private:
  int m_computerNodeIndex = -1;
};

}  // namespace vastra
