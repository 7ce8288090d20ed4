// CConfVarListDlg edits the names that the user adds to a fixed list. The trend's configuration opens it.
#pragma once

#include "vastra/screens/name_list_dlg.h"

namespace vastra {

class CConfVarListDlg : public CNameListDlg {
 public:
  explicit CConfVarListDlg(CWnd* parent = nullptr);

  CStringArray m_source;  // in: the fixed names, which cannot be deleted
  CStringArray m_added;   // in and out: the user's names, listed after the fixed ones

 protected:
  void OnInitDialog() override;

 private:
  void OnInsertButton();
  void OnDeleteButton();
  void ReadAdded();
};

}  // namespace vastra
