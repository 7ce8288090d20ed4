#include "vastra/screens/driver_type_dlg.h"

#include <algorithm>
#include <span>

#include "vastra/plc/driver_factory.h"
#include "vastra/plc/plc_link.h"
#include "vastra/screens/offered_variables.h"
#include "vastra/screens/scaler_dlg.h"
#include "vastra/screens/var_list_dlg.h"
#include "vastra/screens/variables_dlg.h"

namespace vastra {
namespace {

constexpr const char* kType = "Type of PLC :";
constexpr const char* kName = "Name :";
constexpr const char* kVariables = "Variable List";
constexpr const char* kConfigure = "Configure PLC";
constexpr const char* kScaler = "Scaler";
constexpr const char* kAbsent = "When away :";
constexpr const char* kAlive = "Alive variable :";
constexpr const char* kSubstitutes[] = {"Fail the scan", "NaN", "Hold the last values"};  // as in EAbsent
constexpr CControl kNodeControls[] = {
    {CControl::text, kType, {7, 9, 58, 10}},          {CControl::comboBox, kType, {67, 7, 113, 14}},
    {CControl::text, kName, {7, 28, 58, 10}},         {CControl::edit, kName, {67, 26, 113, 14}},
    {CControl::button, kVariables, {7, 50, 74, 14}},  {CControl::button, kConfigure, {87, 50, 74, 14}},
    {CControl::button, kScaler, {167, 50, 74, 14}},   {CControl::defaultButton, "OK", {191, 7, 50, 14}},
    {CControl::button, "Cancel", {191, 26, 50, 14}},  {CControl::text, kAbsent, {7, 75, 58, 10}},
    {CControl::comboBox, kAbsent, {67, 73, 113, 14}}, {CControl::text, kAlive, {7, 94, 58, 10}},
    {CControl::edit, kAlive, {67, 92, 113, 14}},
};
constexpr std::span kDriverTypeControls = std::span(kNodeControls).first<9>();
constexpr CDialogTemplate kDriverTypeTemplate = {"Node", {248, 71}, kDriverTypeControls};
constexpr CDialogTemplate kReadNodeTemplate = {"Node", {248, 113}, kNodeControls};

}  // namespace

CDriverTypeDlg::CDriverTypeDlg(CWnd* parent, bool hasAbsence)
    : CDialog(hasAbsence ? kReadNodeTemplate : kDriverTypeTemplate, parent), m_hasAbsence(hasAbsence) {}

void CDriverTypeDlg::OnInitDialog() {
  const CDriverFactory& factory = *CDriverFactory::Instance();
  CComboBox& types = Combo(kType);
  for (int i = 0; i < factory.GetDriverCount(); ++i) types.AddString(factory.GetDriverName(i));
  if (types.GetCount() == 0) {
    types.AddString("No Drivers Avaliable");
    Button(kConfigure).EnableWindow(false);
  }
  m_driverIndex = 0;
  if (m_driverId != kNoDriver) {
    m_oldName = m_name;
    m_driverIndex = factory.GetDriverIndex(static_cast<int>(m_driverId));
    if (m_driverIndex < 0) {
      AfxMessageBox("Driver not found!");
      m_driverIndex = 0;
    }
  }
  types.SetCurSel(m_driverIndex);
  Edit(kName).SetWindowText(m_name);
  if (m_hasAbsence) {
    for (const char* substitute : kSubstitutes) Combo(kAbsent).AddString(substitute);
    Combo(kAbsent).SetCurSel(static_cast<int>(m_absent));
    Edit(kAlive).SetWindowText(m_aliveVar);
  }
  if (m_pScaler) m_scaler.m_nodes = m_pScaler->m_nodes;
  On(kConfigure, [this] { OnConfplcButton(); });
  On(kVariables, [this] { OnVariableList(); });
  On(kScaler, [this] { OnScalerButton(); });
  On(
      kType, [this] { OnSelchangeComboDriver(); }, ENotify::selected);
}

void CDriverTypeDlg::ReadControls() {
  m_driverIndex = Combo(kType).GetCurSel();
  m_name = Edit(kName).GetWindowText();
  if (!m_hasAbsence) return;
  m_absent = static_cast<EAbsent>(Combo(kAbsent).GetCurSel());
  m_aliveVar = Edit(kAlive).GetWindowText();
}

void CDriverTypeDlg::OnConfplcButton() {
  const int index = Combo(kType).GetCurSel();
  const std::unique_ptr<CPlcLink> link(CDriverFactory::Instance()->NewDriver(index));
  if (!link) return;
  const bool isNew = m_driverId == kNoDriver;
  if (!isNew) {
    DriverConfig given = m_driver;
    given.variableCount = static_cast<UINT>(m_varNames.GetSize());  // the driver may check it
    link->SetConfig(given);
  }
  if (link->ShowConfig(isNew) != IDOK) return;
  if (isNew) m_driverId = static_cast<UINT>(index);
  m_driver = link->GetConfig();
}

void CDriverTypeDlg::OnVariableList() {
  if (m_mode == writeNode) {
    CVariablesDlg dialog(this);
    if (!OfferedVariables(m_pInputPage, m_pSmartPage, dialog.m_available)) return;
    dialog.m_selected = m_varNames;
    if (dialog.DoModal() == IDOK) m_varNames = dialog.m_selected;
    return;
  }
  CVarListDlg dialog(this);
  dialog.m_list = m_varNames;
  if (dialog.DoModal() != IDOK) return;
  m_varNames = dialog.m_list;
  UpdateScalers(1);
}

void CDriverTypeDlg::OnScalerButton() {
  CScalerDlg dialog(this);
  dialog.m_pNames = &m_varNames;
  dialog.m_pScaler = &m_scaler;
  dialog.DoModal();
}

void CDriverTypeDlg::UpdateScalers(int mode) {
  if (mode == 1)
    m_scaler.m_nodes = KeptScalerRows(m_scaler, m_varNames).m_nodes;
  else if (m_pScaler)
    m_pScaler->m_nodes = ScalerRowsOf(m_scaler, m_varNames).m_nodes;
}

// The list contains the node's own name, which it may keep unless another node has the same name.
bool CDriverTypeDlg::IsNameTaken() const {
  if (!m_pNameList || m_pNameList->GetCount() == 0) return false;
  const int first = m_pNameList->FindStringExact(-1, m_name);
  if (m_oldName != m_name) return first >= 0;
  return m_pNameList->FindStringExact(first, m_name) != first;
}

// Why OK is refused; null: it is accepted.
const char* CDriverTypeDlg::Fault() const {
  if (m_driverId == kNoDriver) return "The PLC hasn't been configured";
  if (m_name.IsEmpty()) return "You must assign a name to this node";
  if (m_varNames.IsEmpty()) return "You must assign at least 1 variable to this node";
  if (IsNameTaken()) return "PLC name already used";
  if (std::find(m_varNames.begin(), m_varNames.end(), m_aliveVar) != m_varNames.end())
    return "The alive variable must have a name of its own";
  return nullptr;
}

void CDriverTypeDlg::OnOK() {
  m_driver.variableCount = static_cast<UINT>(m_varNames.GetSize());
  ReadControls();
  if (const char* fault = Fault()) {
    AfxMessageBox(fault);
    return;
  }
  UpdateScalers(0);
  CDialog::OnOK();
}

}  // namespace vastra
