// CScalerDlg: the table of scale, limits and clamping of a node's variables. CDriverTypeDlg opens it.
#pragma once

#include "vastra/screens/grid_wnd.h"
#include "vastra/screens/scaler_rules.h"

namespace vastra {

class VASTRA_API CScalerDlg : public CDialog {
 public:
  explicit CScalerDlg(CWnd* parent = nullptr);

  // Owned by the caller. OK rewrites the scaler with one row for each name.
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
