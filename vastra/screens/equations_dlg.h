// CEquationsDlg is the equation editor: it compiles the text on the spot and shows the place of the first
// fault. A text that it gives away with OK compiles.
#pragma once

#include "vastra/ui/dialog.h"

namespace vastra {

class CEquationsDlg : public CDialog {
 public:
  explicit CEquationsDlg(CWnd* parent = nullptr);

  CStringArray m_varNames;   // in: what the equations may read beside what they assign
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

  CString m_status;  // what the line below the text is to show when it is next drawn
};

}  // namespace vastra
