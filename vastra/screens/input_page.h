// CInputPage: the page of the configuration sheet for the source of the samples. The other pages ask it for
// the variables. It edits a copy of a CInputConfig.
#pragma once

#include "vastra/config/input_config.h"
#include "vastra/config/trend_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class VASTRA_API CInputPage : public CPropertyPage {
  DECLARE_DYNAMIC(CInputPage)
 public:
  CInputPage();

  void SetConfiguration(const CInputConfig& config);
  // Can be called at any time, also without a window.
  void GetConfiguration(CInputConfig& config) const;

  // Refills the list box with the names of the nodes, in order.
  void UpdatePLCList();
  // Marks a node of the list and opens its dialogs; no effect for an index that no node has.
  void OpenNode(int index);

  int OnKillActive() override;
  int OnApply() override;

  // The settings of the trending stage, owned by the host. OnApply checks their equations; null: no check.
  CTrendConfig* m_pTrendOptions = nullptr;

 protected:
  void OnInitDialog() override;

 private:
  void OnConnectedRadio() { ChooseSource(0); }
  void OnSimulatingRadio() { ChooseSource(1); }
  void OnSelectfilesButton();
  void OnPreprocessCheck();
  void OnVariablelistButton();
  void OnPreequationsButton();
  void OnAsfastRadio();
  void OnScanRadio();
  void OnAutostartCheck();
  void OnAddnetnodeButton();
  void OnEditnodeButton();
  void OnDblclkPlcList() { OnEditnodeButton(); }
  void OnDeletenodeButton();
  void ChooseSource(int source);
  void EnableControls();

  CStringArray m_initialVars;  // variables of the source, once the user has opened their list
  CString m_preEquationText;
  COwnedList<CPlcNodeConfig> m_plcNodes;
  CStringArray m_preNewVars;
  CStringArray m_preEquations;
  CStringList m_inputFiles;
  int m_preprocess = 0;
  int m_scanMode = 1;  // 0: as fast as possible, 1: at the scan period
  int m_source = 0;    // 0: connected, 1: simulating
  int m_autoStart = 0;
  UINT m_scanPeriod = 5000;  // milliseconds
};

}  // namespace vastra
