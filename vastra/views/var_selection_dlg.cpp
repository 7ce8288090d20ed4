#include "vastra/views/var_selection_dlg.h"

namespace vastra {
namespace {

constexpr const char* kAvailableVariables = "Available variables";
constexpr const char* kChosen = "Selected variables";
constexpr CControl kVarSelectionControls[] = {
    {CControl::multiListBox, kAvailableVariables, {7, 7, 110, 180}},
    {CControl::button, "--->", {123, 50, 34, 14}},
    {CControl::button, "<---", {123, 68, 34, 14}},
    {CControl::button, ">>", {123, 100, 34, 14}},
    {CControl::button, "<<", {123, 118, 34, 14}},
    {CControl::listBox, kChosen, {163, 7, 110, 180}},
    {CControl::defaultButton, "OK", {168, 194, 50, 14}},
    {CControl::button, "Cancel", {223, 194, 50, 14}},
};
constexpr CDialogTemplate kVarSelectionTemplate = {"Select Variables", {280, 215}, kVarSelectionControls};

}  // namespace

CVarSelectionDlg::CVarSelectionDlg(CWnd* parent) : CDialog(kVarSelectionTemplate, parent) {}

int CVarSelectionDlg::GetColumnNumber(const CString& name, int& place) const {
  const int found = FindIn(*m_pAvailable, name);
  if (found < 0) return 0;
  place = found;
  return 1;
}

void CVarSelectionDlg::OnInitDialog() {
  m_choice = CVarChoice(*m_pAvailable, *m_pSelected);
  ShowLists();
  On("--->", [this] { OnSelvarButton(); });
  On("<---", [this] { OnDelvarButton(); });
  On(">>", [this] { OnSelallvarsButton(); });
  On("<<", [this] { OnDelallvarsButton(); });
  On(
      kAvailableVariables, [this] { OnSelvarButton(); }, ENotify::doubleClicked);
  On(
      kChosen, [this] { OnDelvarButton(); }, ENotify::doubleClicked);
}

void CVarSelectionDlg::ShowLists() {
  List(kAvailableVariables).SetTexts(m_choice.Unused());
  List(kChosen).SetTexts(m_choice.Chosen());
}

// The lists are changed, not filled again, so that they keep their scroll positions.
void CVarSelectionDlg::OnSelvarButton() {
  CListBox& available = List(kAvailableVariables);
  const std::vector<int> marked = available.GetSelItems();
  for (const int place : marked) List(kChosen).AddString(available.GetText(place));
  for (auto place = marked.rbegin(); place != marked.rend(); ++place) available.DeleteString(*place);
  available.SetCurSel(-1);
  m_choice.Choose(marked);
}

void CVarSelectionDlg::OnDelvarButton() {
  const int marked = List(kChosen).GetCurSel();
  if (marked < 0) return;
  m_choice.TakeOut(marked);
  List(kChosen).DeleteString(marked);
  List(kChosen).SetCurSel(-1);
  List(kAvailableVariables).SetTexts(m_choice.Unused());
}

void CVarSelectionDlg::OnSelallvarsButton() {
  m_choice.ChooseAll();
  ShowLists();
}

void CVarSelectionDlg::OnDelallvarsButton() {
  m_choice.TakeOutAll();
  ShowLists();
}

void CVarSelectionDlg::OnOK() {
  const CStringArray& chosen = m_choice.Chosen();
  if (static_cast<UINT>(chosen.GetSize()) > m_max) {
    CString text;
    text.Format("Maximum number of variables is %d", static_cast<int>(m_max));
    AfxMessageBox(text, "Message", MB_OK);
    return;
  }
  *m_pSelected = chosen;
  CDialog::OnOK();
}

}  // namespace vastra
