// CScalerDlg: the table in which the user sets scale, limits and clamping of the variables of a node.
#pragma once

#include "vastra/core/scaler_config.h"
#include "vastra/screens/grid_wnd.h"

namespace vastra {

// For each variable the first row of scaler; without one, a row that leaves its values as they are.
CScalerConfig ScalerRowsOf(const CScalerConfig& scaler, const CStringArray& names);

class VASTRA_API CScalerDlg : public CDialog {
 public:
  explicit CScalerDlg(CWnd* parent = nullptr);

  // Both the caller's. OK gives the scaler a row for each name; what it had for others goes.
  const CStringArray* m_pNames = nullptr;
  CScalerConfig* m_pScaler = nullptr;

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  CArray<int, int> m_clamps;
  CStringArray m_names;
  CArray<float, float> m_scales;
  CArray<float, float> m_minimums;
  CArray<float, float> m_maximums;
  CGridWnd m_grid;
};

}  // namespace vastra
