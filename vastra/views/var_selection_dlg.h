// CVarSelectionDlg: the user picks variables out of those that there are, in an order of his own.
#pragma once

#include "vastra/ui/dialog.h"
#include "vastra/views/var_selection_rules.h"

namespace vastra {

class VASTRA_API CVarSelectionDlg : public CDialog {
 public:
  explicit CVarSelectionDlg(CWnd* parent = nullptr);

  // In front of DoModal. The arrays stay the caller's. m_pSelected changes with OK alone.
  UINT m_max = 0;                              // names that may be chosen
  CStringArray* m_pSelected = nullptr;         // in and out: the chosen names
  const CStringArray* m_pAvailable = nullptr;  // those to choose from

  // 1 and the place of name among the available ones, or 0.
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
