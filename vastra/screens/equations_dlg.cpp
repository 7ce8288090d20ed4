#include "vastra/screens/equations_dlg.h"

#include "vastra/screens/equation_check_rules.h"
#include "vastra/screens/text_files.h"
#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

constexpr const char* kEquations = "Equations";
constexpr const char* kStatus = "";  // the status line is empty at first
constexpr CControl kEquationsControls[] = {
    {CControl::groupBox, kEquations, {7, 7, 292, 170}, CControl::grow},
    {CControl::multiLineEdit, kEquations, {13, 18, 280, 153}, CControl::grow},
    {CControl::text, kStatus, {13, 181, 280, 10}, CControl::moveY | CControl::growX},
    {CControl::button, "Parse", {7, 200, 54, 14}, CControl::moveY},
    {CControl::button, "Import...", {65, 200, 54, 14}, CControl::moveY},
    {CControl::button, "Export...", {123, 200, 54, 14}, CControl::moveY},
    {CControl::defaultButton, "OK", {187, 200, 54, 14}, CControl::move},
    {CControl::button, "Cancel", {245, 200, 54, 14}, CControl::move},
};
constexpr CDialogTemplate kEquationsTemplate = {
    "Equations", {306, 221}, kEquationsControls, CDialogTemplate::resizable};

}  // namespace

CEquationsDlg::CEquationsDlg(CWnd* parent) : CDialog(kEquationsTemplate, parent) {}

void CEquationsDlg::OnInitDialog() {
  Edit(kEquations).SetWindowText(m_text);
  On("Parse", [this] { OnParseButton(); });
  On("Import...", [this] { OnImportButton(); });
  On("Export...", [this] { OnExportButton(); });
  On(
      kEquations, [this] { OnSetfocusEquationsEdit(); }, ENotify::focused);
}

int CEquationsDlg::OnParseButton() {
  CEdit& edit = Edit(kEquations);
  m_text = edit.GetWindowText();
  const CTextFault fault = CheckEquations(m_text, m_varNames, m_equations);
  if (!fault.statement) {
    Flash("0 errors");
    return 1;
  }
  m_status.Format("Found error in equation %d", fault.statement);
  edit.SelectAt(fault.offset, 1);
  edit.SetFocus();
  OnSetfocusEquationsEdit();  // no event occurs if the edit had the focus already
  return 0;
}

// Shows text until the edit gets the focus.
void CEquationsDlg::Flash(const CString& text) {
  Text(kStatus).SetWindowText(text);
  m_status.Empty();
}

void CEquationsDlg::OnSetfocusEquationsEdit() { Text(kStatus).SetWindowText(m_status); }

void CEquationsDlg::OnImportButton() {
  CString text;
  if (!ImportText("Message", text)) return;
  m_equations = LinesOf(text);
  Edit(kEquations).SetWindowText(JoinLines(m_equations));
  CString count;
  count.Format("File containing %d lines", m_equations.GetSize());
  Flash(count);
}

void CEquationsDlg::OnExportButton() { ExportText("Message", Edit(kEquations).GetWindowText()); }

void CEquationsDlg::OnOK() {
  if (OnParseButton()) CDialog::OnOK();
}

}  // namespace vastra
