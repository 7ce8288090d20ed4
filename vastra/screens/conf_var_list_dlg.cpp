#include "vastra/screens/conf_var_list_dlg.h"

namespace vastra {
namespace {

constexpr CControl kConfVarListControls[] = {
    {CControl::text, kVariableList, {7, 7, 130, 9}},
    {CControl::listBox, kVariableList, {7, 18, 130, 145}, CControl::grow},
    {CControl::button, kInsertVariable, {144, 18, 99, 14}, CControl::moveX},
    {CControl::button, kDeleteVariable, {144, 35, 99, 14}, CControl::moveX},
    {CControl::button, "Cancel", {144, 132, 99, 14}, CControl::move},
    {CControl::defaultButton, "OK", {144, 149, 99, 14}, CControl::move},
};
constexpr CDialogTemplate kConfVarListTemplate = {
    "Dialog", {250, 170}, kConfVarListControls, CDialogTemplate::resizable};

}  // namespace

CConfVarListDlg::CConfVarListDlg(CWnd* parent)
    : CNameListDlg(kConfVarListTemplate, kVariableList, "Message", parent) {}

void CConfVarListDlg::OnInitDialog() {
  CStringArray names = m_source;
  names.Append(m_added);
  Names().SetTexts(names);
  On(kInsertVariable, [this] { OnInsertButton(); });
  On(kDeleteVariable, [this] { OnDeleteButton(); });
}

void CConfVarListDlg::OnInsertButton() {
  if (InsertVariable()) ReadAdded();
}

void CConfVarListDlg::OnDeleteButton() {
  const int marked = MarkedVariable();
  if (marked < 0) return;
  const int index = FindIn(m_added, Names().GetText(marked));
  if (index < 0) {
    Tell("You can't delete source variables");
    return;
  }
  DeleteVariable(m_source.GetSize() + index);
  ReadAdded();
}

void CConfVarListDlg::ReadAdded() {
  m_added.RemoveAll();
  for (int i = m_source.GetSize(); i < Names().GetCount(); ++i) m_added.Add(Names().GetText(i));
}

}  // namespace vastra
