// CConfVarListDlg adds names to a fixed list.
#pragma once

#include "vastra/screens/name_list_dlg.h"

namespace vastra {

class CConfVarListDlg : public CNameListDlg {
 public:
  explicit CConfVarListDlg(CWnd* parent = nullptr);

  CStringArray m_source;  // in: those that cannot be deleted
  CStringArray m_added;   // in and out: those of the user, which stand behind them

 protected:
  void OnInitDialog() override;

 private:
  void OnInsertButton();
  void OnDeleteButton();
  void ReadAdded();
};

}  // namespace vastra
