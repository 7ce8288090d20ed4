// CSmartLogic: logic of the host that reads variables of the smart stage and writes others at each scan, such
// as a controller, an optimiser or a model of the plant.
#pragma once

#include "vastra/stages/log_smart.h"

namespace vastra {

class CSmartLogic {
 public:
  CSmartLogic() = default;
  CSmartLogic(const CSmartLogic&) = delete;
  CSmartLogic& operator=(const CSmartLogic&) = delete;
  virtual ~CSmartLogic() = default;

  // Called once, after smart has opened, to look up the indexes of variables. 0: a variable is missing, and
  // the run does not start.
  virtual int Open(CLogSmart& smart) = 0;
  // Called once a scan, between the two sides of smart. time: of the sample.
  virtual void Run(CLogSmart& smart, const _timeb& time) = 0;
};

}  // namespace vastra
