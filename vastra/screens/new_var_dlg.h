// CNewVarDlg asks for the name of a new variable; CNameListDlg opens it.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class VASTRA_API CNewVarDlg : public CDialog {
 public:
  explicit CNewVarDlg(CWnd* parent = nullptr);

  CString m_name;  // in and out; not empty after OK

 protected:
  void OnInitDialog() override;
  void OnOK() override;
};

}  // namespace vastra
