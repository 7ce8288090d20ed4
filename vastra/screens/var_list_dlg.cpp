#include "vastra/screens/var_list_dlg.h"

namespace vastra {
namespace {

constexpr CControl kVarListControls[] = {
    {CControl::text, kVariableList, {7, 7, 130, 9}},
    {CControl::dragListBox, kVariableList, {7, 18, 130, 185}, CControl::grow},
    {CControl::button, "Import", {144, 18, 99, 14}, CControl::moveX},
    {CControl::button, "Export ", {144, 35, 99, 14}, CControl::moveX},
    {CControl::button, kInsertVariable, {144, 61, 99, 14}, CControl::moveX},
    {CControl::button, kDeleteVariable, {144, 78, 99, 14}, CControl::moveX},
    {CControl::button, "Delete All", {144, 95, 99, 14}, CControl::moveX},
    {CControl::defaultButton, "OK", {144, 172, 99, 14}, CControl::move},
    {CControl::button, "Cancel", {144, 189, 99, 14}, CControl::move},
};
constexpr CDialogTemplate kVarListTemplate = {
    "Variables", {250, 210}, kVarListControls, CDialogTemplate::resizable};

}  // namespace

CVarListDlg::CVarListDlg(CWnd* parent) : CNameListDlg(kVarListTemplate, kVariableList, "", parent) {}

void CVarListDlg::OnInitDialog() {
  Names().SetTexts(m_list);
  ConnectFreeList();
  On(kInsertVariable, [this] { OnInsertButton(); });
  On(kDeleteVariable, [this] { OnDeleteButton(); });
}

void CVarListDlg::OnOK() {
  m_list = Names().GetTexts();
  CDialog::OnOK();
}

}  // namespace vastra
