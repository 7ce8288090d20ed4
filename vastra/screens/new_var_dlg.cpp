#include "vastra/screens/new_var_dlg.h"

namespace vastra {
namespace {

constexpr const char* kNewName = "New Variable";
constexpr CControl kNewVarControls[] = {
    {CControl::text, kNewName, {7, 7, 172, 9}},
    {CControl::edit, kNewName, {7, 18, 172, 14}},
    {CControl::defaultButton, "OK", {73, 41, 50, 14}},
    {CControl::button, "Cancel", {129, 41, 50, 14}},
};
constexpr CDialogTemplate kNewVarTemplate = {"Insert Variable", {186, 62}, kNewVarControls};

}  // namespace

CNewVarDlg::CNewVarDlg(CWnd* parent) : CDialog(kNewVarTemplate, parent) {}

void CNewVarDlg::OnInitDialog() {
  Edit(kNewName).SetWindowText(m_name);
  Edit(kNewName).SetFocus();
}

void CNewVarDlg::OnOK() {
  const CString name = Edit(kNewName).GetWindowText();
  if (name.IsEmpty()) {
    AfxMessageBox("The name of the variable can't be a null string", "Message", MB_ICONEXCLAMATION);
    return;
  }
  m_name = name;
  CDialog::OnOK();
}

}  // namespace vastra
