#include "vastra/screens/variables_dlg.h"

#include "vastra/screens/text_list_rules.h"

namespace vastra {
namespace {

constexpr const char* kAvailable = "Available Vars";
constexpr const char* kSelected = "Selected Vars";
constexpr CControl kVariablesControls[] = {
    {CControl::text, kAvailable, {7, 7, 115, 9}},
    {CControl::multiListBox, kAvailable, {7, 18, 115, 195}, CControl::growY},
    {CControl::button, "->", {128, 76, 30, 14}},
    {CControl::button, "->>", {128, 94, 30, 14}},
    {CControl::text, kSelected, {164, 7, 115, 9}},
    {CControl::dragListBox, kSelected, {164, 18, 115, 195}, CControl::grow},
    {CControl::button, "Import", {286, 18, 99, 14}, CControl::moveX},
    {CControl::button, "Export ", {286, 35, 99, 14}, CControl::moveX},
    {CControl::button, kInsertVariable, {286, 61, 99, 14}, CControl::moveX},
    {CControl::button, kDeleteVariable, {286, 78, 99, 14}, CControl::moveX},
    {CControl::button, "Delete All", {286, 95, 99, 14}, CControl::moveX},
    {CControl::defaultButton, "OK", {286, 182, 99, 14}, CControl::move},
    {CControl::button, "Cancel", {286, 199, 99, 14}, CControl::move},
};
constexpr CDialogTemplate kVariablesTemplate = {
    "Variables", {392, 220}, kVariablesControls, CDialogTemplate::resizable};

}  // namespace

CVariablesDlg::CVariablesDlg(CWnd* parent) : CNameListDlg(kVariablesTemplate, kSelected, "", parent) {}

void CVariablesDlg::OnInitDialog() {
  List(kAvailable).SetTexts(m_available);
  Names().SetTexts(m_selected);
  ConnectFreeList();
  On("->", [this] { OnSelectvarButton(); });
  On("->>", [this] { OnSelectallvarsButton(); });
  On(kInsertVariable, [this] { OnInsertvarButton(); });
  On(kDeleteVariable, [this] { OnDeletevarButton(); });
}

// A name that is available twice and marked twice is added twice.
void CVariablesDlg::OnSelectvarButton() {
  CStringArray marked;
  CStringArray missing;
  {
    const CWaitCursor wait;
    for (const int index : List(kAvailable).GetSelItems()) marked.Add(List(kAvailable).GetText(index));
    missing = MissingFrom(Names().GetTexts(), marked);
    for (const CString& name : missing) Names().AddString(name);
  }
  if (missing.GetSize() < marked.GetSize())
    Tell("The variable or some of the variables selected already exist in the list");
}

void CVariablesDlg::OnSelectallvarsButton() {
  List(kAvailable).SelectAll();
  OnSelectvarButton();
}

void CVariablesDlg::OnOK() {
  m_selected = Names().GetTexts();
  CDialog::OnOK();
}

}  // namespace vastra
