#include "vastra/screens/smart_page.h"

#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/offered_variables.h"
#include "vastra/screens/var_list_dlg.h"
#include "vastra/screens/variables_dlg.h"

namespace vastra {
namespace {

constexpr const char* kSmartInputVariables = "Smart Input Variables...";
constexpr const char* kSmartEquations = "Smart Equations...";
constexpr const char* kOutputVariables = "Smart Output Variables...";
constexpr CControl kSmartPageControls[] = {
    {CControl::groupBox, "Tarvex Input", {7, 7, 266, 66}},
    {CControl::button, kSmartInputVariables, {80, 27, 120, 14}},
    {CControl::button, kSmartEquations, {80, 48, 120, 14}},
    {CControl::groupBox, "Tarvex Output", {7, 82, 266, 45}},
    {CControl::button, kOutputVariables, {80, 102, 120, 14}},
};
constexpr CDialogTemplate kSmartPageTemplate = {"Tarvex", {280, 200}, kSmartPageControls};

}  // namespace

IMPLEMENT_DYNCREATE(CSmartPage, CPropertyPage)

CSmartPage::CSmartPage() : CPropertyPage(kSmartPageTemplate) {}

void CSmartPage::SetConfiguration(const CSmartConfig& config) {
  m_outputVars = config.m_outputVars;
  m_equations = config.m_equations;
  m_inputVars = config.m_inputVars;
  m_equationText = config.m_equationText;
}

void CSmartPage::GetConfiguration(CSmartConfig& config) const {
  config.m_outputVars = m_outputVars;
  config.m_equations = m_equations;
  config.m_inputVars = m_inputVars;
  config.m_equationText = m_equationText;
}

void CSmartPage::OnInitDialog() {
  On(kSmartInputVariables, [this] { OnInputVariables(); });
  On(kSmartEquations, [this] { OnEquationsSmart(); });
  On(kOutputVariables, [this] { OnSmartoutvarsButton(); });
}

void CSmartPage::OnInputVariables() {
  CVariablesDlg dialog(this);
  if (!InputVariables(m_pInputPage, dialog.m_available)) return;
  dialog.m_selected = m_inputVars;
  if (dialog.DoModal() == IDOK) m_inputVars = dialog.m_selected;
}

void CSmartPage::OnEquationsSmart() {
  CEquationsDlg dialog(this);
  if (!InputVariables(m_pInputPage, dialog.m_varNames)) return;
  dialog.m_text = m_equationText;
  dialog.m_equations = m_equations;
  if (dialog.DoModal() != IDOK) return;
  m_equationText = dialog.m_text;
  m_equations = dialog.m_equations;
}

void CSmartPage::OnSmartoutvarsButton() {
  CVarListDlg dialog(this);
  dialog.m_list = m_outputVars;
  if (dialog.DoModal() == IDOK) m_outputVars = dialog.m_list;
}

}  // namespace vastra
