// CVariablesDlg selects names from the available ones; the user can add new names.
#pragma once

#include "vastra/screens/name_list_dlg.h"

namespace vastra {

class CVariablesDlg : public CNameListDlg {
 public:
  explicit CVariablesDlg(CWnd* parent = nullptr);

  void SetAvailableVars(const CStringArray& names) { m_available = names; }

  CStringArray m_available;  // in
  CStringArray m_selected;   // in and out

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  void OnSelectvarButton();
  void OnSelectallvarsButton();
  void OnInsertvarButton() { InsertVariable(); }
  void OnDeletevarButton() { DeleteMarked(); }
};

}  // namespace vastra
