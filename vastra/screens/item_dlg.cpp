#include "vastra/screens/item_dlg.h"

#include <limits>

#include "vastra/screens/equations_dlg.h"
#include "vastra/screens/item_rules.h"
#include "vastra/screens/offered_variables.h"
#include "vastra/screens/variables_dlg.h"

namespace vastra {

template <class TConfig>
CItemDlg<TConfig>::CItemDlg(const CDialogTemplate& model, const char* binary, const char* most,
                            const char* samples, UINT TConfig::*mostFiles, CWnd* parent)
    : CDialog(model, parent), m_binary(binary), m_most(most), m_samples(samples), m_mostFiles(mostFiles) {
  m_config.*m_mostFiles = m_config.m_maxSamples = 0;
}

template <class TConfig>
void CItemDlg<TConfig>::OnInitDialog() {
  m_path.SubclassDlgItem(*this, kItemPath);
  Edit(kItemName).SetWindowText(m_config.m_name);
  m_path.SetWindowText(m_config.m_directory);
  Button(m_binary).SetCheck(m_config.m_saveRp);
  Button(kItemText).SetCheck(m_config.m_saveCsv);
  ShowNumber(m_most, m_config.*m_mostFiles);
  ShowNumber(m_samples, m_config.m_maxSamples);
}

template <class TConfig>
int CItemDlg<TConfig>::TakeFields() {
  constexpr UINT kMost = std::numeric_limits<UINT>::max();
  if (!ReadNumber(m_most, 0, kMost, m_config.*m_mostFiles) ||
      !ReadNumber(m_samples, 0, kMost, m_config.m_maxSamples))
    return 0;
  m_config.m_name = Edit(kItemName).GetWindowText();
  m_config.m_directory = m_path.GetWindowText();
  m_config.m_saveRp = Button(m_binary).GetCheck();
  m_config.m_saveCsv = Button(kItemText).GetCheck();
  return 1;
}

template <class TConfig>
void CItemDlg<TConfig>::OnOK() {
  if (!TakeFields()) return;
  if (const char* fault = FirstFault(m_config))
    AfxMessageBox(fault);
  else
    CDialog::OnOK();
}

template <class TConfig>
int CItemDlg<TConfig>::Offered(CStringArray& names) const {
  return OfferedVariables(m_pInputPage, m_pSmartPage, names);
}

template <class TConfig>
void CItemDlg<TConfig>::EditVariables() {
  CVariablesDlg dialog(this);
  if (!Offered(dialog.m_available)) return;
  dialog.m_selected = m_config.m_varNames;
  if (dialog.DoModal() == IDOK) m_config.m_varNames = dialog.m_selected;
}

template <class TConfig>
void CItemDlg<TConfig>::EditEquations(CString& text, CStringArray& equations) {
  CEquationsDlg dialog(this);
  if (!Offered(dialog.m_varNames)) return;
  dialog.m_text = text;
  dialog.m_equations = equations;
  if (dialog.DoModal() != IDOK) return;
  text = dialog.m_text;
  equations = dialog.m_equations;
}

template <class TConfig>
void CItemDlg<TConfig>::EditEnableEquations() {
  if (m_config.m_enableText.IsEmpty()) m_config.m_enableText = ProposedEnableText(m_config);
  EditEquations(m_config.m_enableText, m_config.m_enableEquations);
}

template class CItemDlg<COutputConfig>;
template class CItemDlg<CSummaryConfig>;

}  // namespace vastra
