// The names that the stages of a configuration will see, worked out on closed stages and without contacting a
// PLC.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

struct CStageNames {
  bool hasSource = false;  // false: not to be had, such as when a log is missing
  CStringArray source;     // in front of the preprocessing
  bool hasInput = false;
  CStringArray input;        // what the input stage gives
  CStringArray behindSmart;  // the same with the smart output variables behind it
};

// Whether configuration uses the smart stage.
bool UsesSmart(const CSmartConfig& smart);

// The names of the samples of the trending stage.
CStringArray TrendNames(const CStageNames& names, const CTrendConfig& trend);

// Opens temporary links; what fails in them goes to the messenger.
CStageNames FindStageNames(const CConfiguration& configuration);

}  // namespace vastra
