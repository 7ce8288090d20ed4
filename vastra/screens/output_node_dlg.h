// COutputNodeDlg edits one log output; COutputPage opens it.
#pragma once

#include "vastra/screens/item_dlg.h"

namespace vastra {

class COutputNodeDlg : public CItemDlg<COutputConfig> {
 public:
  explicit COutputNodeDlg(CWnd* parent = nullptr);

 protected:
  void OnInitDialog() override;
  int TakeFields() override;

 private:
  void OnVariablesButton() { EditVariables(); }
  void OnEnableeqButton() { EditEnableEquations(); }
  void OnSelchangeNameBasis();
  void OnUsePrefix();
};

}  // namespace vastra
