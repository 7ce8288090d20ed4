// CSummaryNodeDlg edits one summary; CSummaryPage opens it.
#pragma once

#include "vastra/screens/item_dlg.h"

namespace vastra {

class CSummaryNodeDlg : public CItemDlg<CSummaryConfig> {
 public:
  explicit CSummaryNodeDlg(CWnd* parent = nullptr);

 protected:
  void OnInitDialog() override;

 private:
  void OnVariablesSum() { EditVariables(); }
  void OnEquationsenSum() { EditEnableEquations(); }
  void OnEquationsSum() { EditEquations(m_config.m_summaryText, m_config.m_summaryEquations); }
};

}  // namespace vastra
