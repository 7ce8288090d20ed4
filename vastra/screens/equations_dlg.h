// CEquationsDlg is the equation editor. It compiles the text and marks the first fault; OK accepts only a
// text that compiles. The pages and dialogs with equations open it.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class CEquationsDlg : public CDialog {
 public:
  explicit CEquationsDlg(CWnd* parent = nullptr);

  CStringArray m_varNames;   // in: variables that the equations may read
  CString m_text;            // in and out: as typed
  CStringArray m_equations;  // out: the statements

 protected:
  void OnInitDialog() override;
  void OnOK() override;

 private:
  int OnParseButton();  // 1: the text is valid
  void OnImportButton();
  void OnExportButton();
  void OnSetfocusEquationsEdit();
  void Flash(const CString& text);

  CString m_status;  // shown in the status line when the edit gets the focus
};

}  // namespace vastra
