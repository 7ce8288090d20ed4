// The names that the stages of a configuration will see, found on closed stages and without contacting a PLC.
#pragma once

#include "host/common/configuration.h"

namespace vastra {

struct CStageNames {
  bool hasSource = false;  // false: unknown, for example because a log is missing
  CStringArray source;     // before the preprocessing
  bool hasInput = false;
  CStringArray input;       // after the preprocessing
  CStringArray afterSmart;  // the same and the smart output variables
};

// Whether a configuration with these settings uses the smart stage.
bool UsesSmart(const CSmartConfig& smart);

// The names of the samples of the trending stage.
CStringArray TrendNames(const CStageNames& names, const CTrendConfig& trend);

// Sets the names after the source from those of the source.
void AddLaterNames(const CConfiguration& configuration, CStageNames& names);

// Opens temporary links; their failures go to the messenger.
CStageNames FindStageNames(const CConfiguration& configuration);

}  // namespace vastra
