// CVarSelectionDlg: the user selects variables in any order.
#pragma once

#include "vastra/ui/dialog.h"
#include "vastra/views/var_selection_rules.h"

namespace vastra {

class VASTRA_API CVarSelectionDlg : public CDialog {
 public:
  explicit CVarSelectionDlg(CWnd* parent = nullptr);

  // Set before DoModal. The caller owns the arrays. Only OK changes m_pSelected.
  UINT m_max = 0;                              // limit of selected names
  CStringArray* m_pSelected = nullptr;         // in and out: the selected names
  const CStringArray* m_pAvailable = nullptr;  // all names

  // 1 and the place of name in the available names, or 0.
  int GetColumnNumber(const CString& name, int& place) const;

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  void OnSelvarButton();
  void OnDelvarButton();
  void OnSelallvarsButton();
  void OnDelallvarsButton();
  void ShowLists();

  CVarChoice m_choice;
};

}  // namespace vastra
