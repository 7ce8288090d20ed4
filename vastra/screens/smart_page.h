// CSmartPage: the page of the configuration sheet for the variables that the host's own logic reads and
// writes. It works on copies: a CSmartConfig goes in and comes out.
#pragma once

#include "vastra/config/smart_config.h"
#include "vastra/ui/property_sheet.h"

namespace vastra {

class CInputPage;

class VASTRA_API CSmartPage : public CPropertyPage {
  DECLARE_DYNAMIC(CSmartPage)
 public:
  CSmartPage();

  // The page that tells which variables there are, the host's; null: none.
  void SetInputPointer(CInputPage* page) { m_pInputPage = page; }

  void SetConfiguration(const CSmartConfig& config);
  void GetConfiguration(CSmartConfig& config) const;  // m_inputNames stays

 protected:
  void OnInitDialog() override;

 private:
  void OnInputVariables();
  void OnEquationsSmart();
  void OnSmartoutvarsButton();

  CStringArray m_outputVars;
  CStringArray m_equations;
  CStringArray m_inputVars;
  CString m_equationText;
  CInputPage* m_pInputPage = nullptr;
};

}  // namespace vastra
