// CNewVarDlg asks for the name of one new variable.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API CNewVarDlg : public CDialog {
 public:
  explicit CNewVarDlg(CWnd* parent = nullptr);

  CString m_name;  // in and out; behind OK it is not empty

 protected:
  void OnInitDialog() override;
  void OnOK() override;
};

}  // namespace vastra
