// CScaleValuesDlg: asks for the scale of a curve.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class CScaleValuesDlg : public CDialog {
 public:
  explicit CScaleValuesDlg(CWnd* parent = nullptr);

  // In: the shown values. Out, after IDOK: the typed values; either can be the larger one.
  double m_max = 0;
  double m_min = 0;

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  int Take(const char* caption, double& value) const;
};

}  // namespace vastra
