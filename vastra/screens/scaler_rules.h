// Which rows the scaler of a PLC node has; CDriverTypeDlg and CScalerDlg call it.
#pragma once

#include "vastra/core/scaler_config.h"

namespace vastra {

// For each variable the first row of scaler; without one, a row that does not change the values.
CScalerConfig ScalerRowsOf(const CScalerConfig& scaler, const CStringArray& names);
// The rows of scaler whose variable is in names, in the order of scaler.
CScalerConfig KeptScalerRows(const CScalerConfig& scaler, const CStringArray& names);

}  // namespace vastra
