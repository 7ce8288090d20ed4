#include "vastra/screens/trend_facade_dlg.h"

#include <utility>

#include "vastra/screens/conf_var_list_dlg.h"
#include "vastra/screens/equations_dlg.h"
#include "vastra/stages/log_trendings.h"

namespace vastra {
namespace {

constexpr const char* kVariablesButton = "Variables ";
constexpr const char* kEquationsButton = "Equations";
constexpr CControl kTrendFacadeControls[] = {
    {CControl::button, kVariablesButton, {7, 7, 70, 14}},
    {CControl::button, kEquationsButton, {7, 26, 70, 14}},
    {CControl::defaultButton, "OK", {91, 7, 50, 14}},
    {CControl::button, "Cancel", {91, 26, 50, 14}},
};
// The other view stays usable; it gets a message when it opens the same dialog.
constexpr CDialogTemplate kTrendFacadeTemplate = {
    "Configuration", {148, 47}, kTrendFacadeControls, CDialogTemplate::blocksParent};

void TellOfTrend(const char* text) { AfxMessageBox(text, "Message", MB_ICONEXCLAMATION); }

}  // namespace

UINT CTrendFacadeDlg::m_suOpen = 0;

CTrendFacadeDlg::CTrendFacadeDlg(CWnd* parent) : CDialog(kTrendFacadeTemplate, parent) {}

void CTrendFacadeDlg::SetInputPointers(CLogInput* /*input*/, CLogTrendings* trendings) {
  m_pTrendings = trendings;
}

void CTrendFacadeDlg::OnInitDialog() {
  ++m_suOpen;
  m_isCounted = true;
  if (m_suOpen > 1) {
    Leave();
    TellOfTrend("Already open");
    EndDialog(0);
    return;
  }
  SetConfiguration(*m_pTrendings->GetOptions());
  On(kVariablesButton, [this] { OnVariablesButton(); });
  On(kEquationsButton, [this] { OnEquationsButton(); });
}

void CTrendFacadeDlg::Leave() {
  if (std::exchange(m_isCounted, false)) --m_suOpen;
}

void CTrendFacadeDlg::SetConfiguration(const CTrendConfig& config) {
  m_extraVars = config.m_extraVars;
  m_equationText = config.m_equationText;
  m_equations = config.m_equations;
  m_baseVars = config.m_baseVars;
}

void CTrendFacadeDlg::GetConfiguration(CTrendConfig& config) const {
  config.m_extraVars = m_extraVars;
  config.m_equationText = m_equationText;
  config.m_equations = m_equations;
  config.m_baseVars = m_baseVars;
}

void CTrendFacadeDlg::OnVariablesButton() {
  if (m_baseVars.IsEmpty()) {
    TellOfTrend("No variables available");
    return;
  }
  CConfVarListDlg dialog(this);
  dialog.m_source = m_baseVars;
  dialog.m_added = m_extraVars;
  if (dialog.DoModal() != IDOK) return;
  m_extraVars = dialog.m_added;
  const int calculates = !m_extraVars.IsEmpty();
  if (std::exchange(m_pTrendings->GetOptions()->m_calculateExtra, calculates) != calculates)
    m_pTrendings->OptionsChanged();
}

void CTrendFacadeDlg::OnEquationsButton() {
  CEquationsDlg dialog(this);
  dialog.m_varNames = m_baseVars;
  dialog.m_text = m_equationText;
  dialog.m_equations = m_equations;
  if (dialog.DoModal() != IDOK) return;
  m_equationText = dialog.m_text;
  m_equations = dialog.m_equations;
}

void CTrendFacadeDlg::OnOK() {
  CTrendConfig& options = *m_pTrendings->GetOptions();
  const bool changes = !(m_extraVars == options.m_extraVars && m_equationText == options.m_equationText &&
                         m_equations == options.m_equations);
  GetConfiguration(options);
  if (changes) m_pTrendings->OptionsChanged();
  CDialog::OnOK();
}

}  // namespace vastra
