// CInputPage: the page of the configuration sheet for where samples come from. The other pages ask it which
// variables there will be. It works on copies: a CInputConfig goes in and comes out.
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
  // Any time, also without a window.
  void GetConfiguration(CInputConfig& config) const;

  // Shows the names of the nodes anew, in list order.
  void UpdatePLCList();

  int OnKillActive() override;
  int OnApply() override;

  // The settings of the trending stage, whose equations an Apply checks; the host's. Null: no check.
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

  CStringArray m_initialVars;  // what the source gives, as far as the user has asked for it
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
