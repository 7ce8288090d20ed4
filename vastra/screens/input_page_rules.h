// Which controls of the input page are enabled, and the check of its settings; CInputPage calls it.
#pragma once

#include "vastra/config/input_config.h"

namespace vastra {

struct CInputControls {
  bool nodes;       // the list and its buttons
  bool files;       // the button that chooses logs
  bool preprocess;  // the buttons of the preprocessing
  bool period;      // the field of the scan period

  bool operator==(const CInputControls&) const = default;
};
CInputControls EnabledControls(int source, int preprocess, int scanMode);

// Bounds of the scan period, milliseconds.
constexpr UINT kMinScanPeriod = 10, kMaxScanPeriod = 65000;

// The message about settings that cannot work; null: they are valid.
const char* FaultOf(const CInputConfig& config);

}  // namespace vastra
