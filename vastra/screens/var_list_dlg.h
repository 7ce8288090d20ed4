// CVarListDlg edits a list of variable names that the user types.
#pragma once

#include "vastra/screens/name_list_dlg.h"

namespace vastra {

class VASTRA_API CVarListDlg : public CNameListDlg {
 public:
  explicit CVarListDlg(CWnd* parent = nullptr);

  CStringArray m_list;  // in and out

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  void OnInsertButton() { InsertVariable(); }
  void OnDeleteButton() { DeleteMarked(); }
};

}  // namespace vastra
