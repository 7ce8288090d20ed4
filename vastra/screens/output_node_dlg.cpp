#include "vastra/screens/output_node_dlg.h"

#include "vastra/screens/item_rules.h"

namespace vastra {
namespace {

constexpr const char* kLogs = "Write Logs";
constexpr const char* kMaxLogs = "Maximum number of logs stored :";
constexpr const char* kMaxSamples = "Maximum number of samples in a log : ";
constexpr const char* kBasis = "Name the logs based on :";
constexpr const char* kDword = "Use the next variable to form a DWORD based name";
constexpr const char* kPrefix = "Use prefix for the log names :";
constexpr CControl kOutputNodeControls[] = {
    {CControl::text, kItemName, {7, 9, 36, 10}},
    {CControl::edit, kItemName, {46, 7, 168, 14}},
    {CControl::text, kItemPath, {7, 29, 36, 10}},
    {CControl::edit, kItemPath, {46, 27, 168, 14}},
    {CControl::checkBox, kLogs, {46, 48, 80, 12}},
    {CControl::checkBox, kItemText, {130, 48, 84, 12}},
    {CControl::text, kMaxLogs, {7, 69, 147, 10}},
    {CControl::numberEdit, kMaxLogs, {158, 67, 56, 14}},
    {CControl::text, kMaxSamples, {7, 89, 147, 10}},
    {CControl::numberEdit, kMaxSamples, {158, 87, 56, 14}},
    {CControl::text, kBasis, {7, 113, 90, 10}},
    {CControl::comboEdit, kBasis, {100, 111, 114, 14}},
    {CControl::checkBox, kDword, {7, 131, 207, 12}},
    {CControl::checkBox, kPrefix, {7, 150, 128, 12}},
    {CControl::edit, kPrefix, {138, 149, 76, 14}},
    {CControl::button, kItemVariables, {222, 67, 91, 14}},
    {CControl::button, kItemEnable, {222, 87, 91, 14}},
    {CControl::defaultButton, "OK", {222, 7, 91, 14}},
    {CControl::button, "Cancel", {222, 27, 91, 14}},
};
constexpr CDialogTemplate kOutputNodeTemplate = {"Output", {320, 170}, kOutputNodeControls};

}  // namespace

COutputNodeDlg::COutputNodeDlg(CWnd* parent)
    : CItemDlg(kOutputNodeTemplate, kLogs, kMaxLogs, kMaxSamples, &COutputConfig::m_maxLogs, parent) {}

void COutputNodeDlg::OnInitDialog() {
  CItemDlg::OnInitDialog();
  CStringArray names;
  const CNameBasis basis = NameBasis(Offered(names) ? &names : nullptr, m_config.m_nameVariable);
  for (const CString& name : basis.offered) Combo(kBasis).AddString(name);
  Combo(kBasis).SetCurSel(basis.selected);
  Button(kDword).SetCheck(m_config.m_dwordName);
  Button(kDword).EnableWindow(CanJoinNext(basis.offered[basis.selected]));
  Button(kPrefix).SetCheck(m_config.m_usePrefix);
  Edit(kPrefix).SetWindowText(m_config.m_prefix);
  OnUsePrefix();
  On(kItemVariables, [this] { OnVariablesButton(); });
  On(kItemEnable, [this] { OnEnableeqButton(); });
  On(
      kBasis, [this] { OnSelchangeNameBasis(); }, ENotify::selected);
  On(kPrefix, [this] { OnUsePrefix(); });
}

int COutputNodeDlg::TakeFields() {
  if (!CItemDlg::TakeFields()) return 0;
  m_config.m_nameVariable = Combo(kBasis).GetWindowText();
  m_config.m_dwordName = Button(kDword).GetCheck();
  m_config.m_usePrefix = Button(kPrefix).GetCheck();
  m_config.m_prefix = Edit(kPrefix).GetWindowText();
  return 1;
}

void COutputNodeDlg::OnSelchangeNameBasis() {
  const bool canJoin = CanJoinNext(Combo(kBasis).GetWindowText());
  if (!canJoin) Button(kDword).SetCheck(0);
  Button(kDword).EnableWindow(canJoin);
}

void COutputNodeDlg::OnUsePrefix() { Edit(kPrefix).EnableWindow(Button(kPrefix).GetCheck() != 0); }

}  // namespace vastra
